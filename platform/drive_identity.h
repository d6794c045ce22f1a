// What a drive is, whatever letter it has.
#pragma once

#include <string>
#include <string_view>

namespace platform {

/// Different ones never mean the same volume, plugged in once and not formatted in between; equal ones do, as
/// far as the system can tell: a copy of a whole stick on another of the same make without a serial number is
/// told apart on Linux from 5.15 on. It is worth nothing after the program's end.
struct DriveIdentity {
    std::string text; ///< of the backend's own making; empty when there is no such drive, or no medium in it

    explicit operator bool() const noexcept { return !text.empty(); }
    bool operator==(const DriveIdentity&) const = default;
};

/// Looks at the drive with that root (`E:\`; what follows the first NUL does not count) as it is at this
/// moment. A disk without a file system has an identity, too. Windows: the volume's serial number of
/// `GetVolumeInformationA`, and the device's number, geometry and serial number of
/// `IOCTL_STORAGE_GET_DEVICE_NUMBER`, `IOCTL_DISK_GET_DRIVE_GEOMETRY` and `IOCTL_STORAGE_QUERY_PROPERTY`, as
/// far as the drive has them,
/// https://learn.microsoft.com/windows/win32/api/winioctl/ni-winioctl-ioctl_storage_get_device_number
DriveIdentity driveIdentity(std::string_view root);

} // namespace platform
