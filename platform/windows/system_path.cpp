#include "platform/system_path.h"

namespace platform {

std::string systemPath(std::string_view path) {
    return std::string(path);
}

} // namespace platform
