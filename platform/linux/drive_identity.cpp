#include "platform/drive_identity.h"

#include "platform/linux/drive_source.h"
#include "platform/linux/drive_table.h"

#include <utility>

namespace platform {

DriveIdentity driveIdentity(std::string_view root) {
    const char letter = posix::driveLetter(root);
    posix::DriveSource& drives = posix::driveSource();
    drives.refresh();
    std::string identity = drives.identity(letter);
    if (identity.empty()) posix::driveMissed(drives);
    return {std::move(identity)};
}

} // namespace platform
