#include "platform/accounts.h"

#include "fake_process.h"

namespace fake {

Accounts& accounts() {
    static Accounts theAccounts;
    return theAccounts;
}

} // namespace fake

namespace platform {

std::optional<std::vector<std::string>> localGroupMembers(std::string_view group) {
    const auto found = fake::accounts().groups.find(std::string(group));
    if (found == fake::accounts().groups.end()) return std::nullopt;
    return found->second;
}

std::string userName() {
    return fake::accounts().user;
}

} // namespace platform
