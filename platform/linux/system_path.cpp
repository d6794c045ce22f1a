#include "platform/system_path.h"

#include "platform/linux/drives/drive_table.h"

#include <algorithm>

namespace platform {

namespace {

constexpr std::size_t rootLength = 3; // of `E:\`

/// The path with a folder in place of the drive; as it stands where there is none.
std::string withFolder(std::string_view path) {
    const char letter = linux::driveLetter(path.substr(0, rootLength));
    std::optional<std::string> folder;
    if (letter != 0) folder = linux::driveFolder(letter);
    if (!folder) return std::string(path);
    const std::string_view rest = path.substr(std::min(path.size(), rootLength));
    if (!rest.empty() && !folder->ends_with('/')) *folder += '/';
    return folder->append(rest);
}

} // namespace

std::string systemPath(std::string_view path) {
    std::string shown = withFolder(path);
    if (shown.starts_with('/')) std::replace(shown.begin(), shown.end(), '\\', '/');
    return shown;
}

} // namespace platform
