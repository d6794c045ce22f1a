#include "drive/drive_name.h"

#include "base/letters.h"

namespace drive {

std::string driveName(std::string_view root) {
    return base::upper(root.substr(0, 2));
}

} // namespace drive
