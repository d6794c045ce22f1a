#include "platform/linux/base/runtime_folder.h"

#include "base/whole_number.h"

#include <cstdlib>
#include <unistd.h>

namespace platform::linux {

std::string usualRuntimeFolder(uid_t user) {
    return "/run/user/" + std::to_string(user);
}

std::string runtimeFolder() {
    const char* given = std::getenv("XDG_RUNTIME_DIR"); // NOLINT(concurrency-mt-unsafe): nobody sets it
    if (given != nullptr && given[0] == '/') return given;
    std::string usual = usualRuntimeFolder(getuid());
    return geteuid() == 0 && access(usual.c_str(), F_OK) != 0 ? "/run" : usual;
}

std::optional<uid_t> userBehindPkexec() {
    const char* user = std::getenv("PKEXEC_UID"); // NOLINT(concurrency-mt-unsafe): nobody sets it
    if (geteuid() != 0 || user == nullptr) return std::nullopt;
    return base::wholeNumber<uid_t>(user);
}

} // namespace platform::linux
