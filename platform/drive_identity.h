// What a drive is, whatever letter it has.
#pragma once

#include <string>
#include <string_view>

namespace platform {

/// Two are equal exactly when they mean the same volume on the same medium, plugged in once and not formatted
/// in between. It is worth nothing after the program's end.
struct DriveIdentity {
    std::string text; ///< of the backend's own making; empty when there is no such drive, or no medium in it

    explicit operator bool() const noexcept { return !text.empty(); }
    bool operator==(const DriveIdentity&) const = default;
};

/// Looks at the drive with that root (`E:\`; what follows the first NUL does not count) as it is at this
/// moment. A disk without a file system has an identity, too. Windows: the volume's serial number of
/// `GetVolumeInformationA` and the device's one of `IOCTL_STORAGE_GET_DEVICE_NUMBER`, as far as the drive has
/// them, https://learn.microsoft.com/windows/win32/api/winioctl/ni-winioctl-ioctl_storage_get_device_number
DriveIdentity driveIdentity(std::string_view root);

} // namespace platform
