#include "platform/drive_identity.h"

#include "platform/linux/drive_source.h"
#include "platform/linux/drive_table.h"

namespace platform {

DriveIdentity driveIdentity(std::string_view root) {
    const char letter = posix::driveLetter(root);
    posix::DriveSource& drives = posix::driveSource();
    drives.refresh();
    return {drives.identity(letter)};
}

} // namespace platform
