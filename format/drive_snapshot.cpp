#include "format/drive_snapshot.h"

#include "drive/drive_name.h"
#include "platform/volumes.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace Module1 {

namespace {

/// The fixed drives in the order the system gives them. 16 roots or more do not fit into the buffer, which
/// stays empty then: there are no drives. This is intended.
std::vector<std::string> fixedDrives() {
    std::array<char, 64> buffer = {};
    platform::logicalDriveStrings(buffer);
    std::string_view roots(buffer.data(), buffer.size());
    std::vector<std::string> drives;
    while (!roots.empty() && roots.front() != '\0') {
        const std::string_view root = roots.substr(0, roots.find('\0'));
        if (platform::driveType(root) == platform::DriveFixed) drives.push_back(drive::driveName(root));
        roots.remove_prefix(std::min(root.size() + 1, roots.size()));
    }
    return drives;
}

} // namespace

void DriveSnapshot::take() {
    drives_ = fixedDrives();
}

std::string DriveSnapshot::newDrive() const {
    const std::vector<std::string> drives = fixedDrives();
    return drives.size() > drives_.size() ? drives.back() : std::string();
}

} // namespace Module1
