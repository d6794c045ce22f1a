#include "format/admin_check.h"

#include "platform/accounts.h"

#include <algorithm>

namespace format {

bool IsUserAdmin() {
    const std::string user = platform::userName();
    const auto members = platform::localGroupMembers(platform::administratorsGroup);
    return members && std::find(members->begin(), members->end(), user) != members->end();
}

} // namespace format
