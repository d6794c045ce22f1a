// The drives of the computer: which there are, what they are, how full they are, what they are called.
#pragma once

#include "platform/drive_identity.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace platform {

/// Results of driveType(). Windows: `GetDriveTypeA`,
/// https://learn.microsoft.com/windows/win32/api/fileapi/nf-fileapi-getdrivetypea
enum DriveType : std::uint32_t {
    DriveUnknown = 0,
    DriveNoRootDir = 1, ///< there is no such drive
    DriveRemovable = 2,
    DriveFixed = 3,
    DriveRemote = 4,
    DriveCdRom = 5,
};

/// Fills the buffer with the drive roots (`C:\`), each followed by a NUL, and one more NUL at the end.
/// Returns the number of characters without that last NUL; when the buffer is too small it is left alone and
/// the result is the size that would do, the last NUL included. Windows: `GetLogicalDriveStringsA`,
/// https://learn.microsoft.com/windows/win32/api/fileapi/nf-fileapi-getlogicaldrivestringsa
std::uint32_t logicalDriveStrings(std::span<char> buffer);

/// Type of the drive with that root (`E:\`; what follows the first NUL does not count), a DriveType.
std::uint32_t driveType(std::string_view root);

/// Sizes in bytes, each an unsigned 64-bit number with its lowest byte first.
struct DiskFreeSpace {
    using Bytes = std::array<std::uint8_t, 8>;
    Bytes freeToCaller{};
    Bytes total{};
    Bytes totalFree{};
};

/// Measures the drive with that root; false, with `space` as it was, when it has no medium or does not exist.
/// Windows: `GetDiskFreeSpaceExA`,
/// https://learn.microsoft.com/windows/win32/api/fileapi/nf-fileapi-getdiskfreespaceexa
bool diskFreeSpace(std::string_view root, DiskFreeSpace& space);

/// Stores the volume's label and the name of its file system ("FAT32"), UTF-8, each closed by a NUL and cut
/// to its buffer; false, with the buffers as they were, when there is no medium. Windows:
/// `GetVolumeInformationA`,
/// https://learn.microsoft.com/windows/win32/api/fileapi/nf-fileapi-getvolumeinformationa
bool volumeInformation(std::string_view root, std::span<char> label, std::span<char> fileSystem);

/// What a person knows a disk by. Texts are UTF-8, as the disk has them.
struct DiskDescription {
    std::string maker; ///< empty where the system does not know, as the next
    std::string model;
    std::uint64_t size = 0; ///< bytes; 0 without a medium
    std::string label;      ///< of the volume; empty for none
};

/// Describes the disk with that root as it was listed last; a file system is neither needed nor mounted for
/// it. Windows: `IOCTL_STORAGE_QUERY_PROPERTY`, `GetDiskFreeSpaceExA`, for a disk without a file system
/// `IOCTL_DISK_GET_DRIVE_GEOMETRY`, and `GetVolumeInformationA`,
/// https://learn.microsoft.com/windows/win32/api/winioctl/ni-winioctl-ioctl_storage_query_property
DiskDescription diskDescription(std::string_view root);

/// Gives the volume another label, or none; `drive` is what the root has to lead to, and any drive when it is
/// empty. Windows: `SetVolumeLabelA`,
/// https://learn.microsoft.com/windows/win32/api/winbase/nf-winbase-setvolumelabela
bool setVolumeLabel(std::string_view root, std::string_view label, const DriveIdentity& drive = {});

/// Brings everything written to the drive onto the medium; the drive may be pulled afterwards. False when the
/// medium did not take it. Windows: `FlushFileBuffers` on the volume.
bool settleVolume(std::string_view root);

/// What keeps the program from seeing its drives, as a German sentence that says what to do about it; empty
/// when nothing does. As of the last logicalDriveStrings(). Windows: always empty.
std::string missingDriveService();

/// Gives back what the program took of the drives; nothing of this header may be called afterwards.
void releaseVolumes();

} // namespace platform
