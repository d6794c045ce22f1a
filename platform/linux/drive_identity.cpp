#include "platform/drive_identity.h"

#include "platform/linux/drives/drive_source.h"
#include "platform/linux/drives/drive_table.h"

#include <utility>

namespace platform {

DriveIdentity driveIdentity(std::string_view root) {
    const char letter = linux::driveLetter(root);
    linux::listToIdentify(letter);
    linux::DriveSource& drives = linux::driveSource();
    std::string identity = drives.identity(letter);
    if (identity.empty()) linux::driveMissed(drives);
    return {std::move(identity)};
}

} // namespace platform
