// What Windows tells of a volume and of the disk under it.
#pragma once

#include "tools/fat32format/system.h"
#include "tools/fat32format/windows/device.h"

#include <winioctl.h>

#include <optional>
#include <string>
#include <vector>

namespace fat32format {

/// Where a volume lies: one piece of a disk each.
/// https://learn.microsoft.com/windows/win32/api/winioctl/ni-winioctl-ioctl_volume_get_volume_disk_extents
std::optional<std::vector<DISK_EXTENT>> extentsOf(Device& volume);

/// `\\.\E:`
std::wstring volumeName(wchar_t letter);
/// `\\.\PhysicalDrive2`
std::wstring diskName(DWORD number);

/// Which disk is behind two devices that are open; no value when they do not answer, or the volume is not a
/// piece of that disk.
///
/// The sequence is made of the number that Windows gives the disk and of how often its medium has been
/// exchanged. Windows gives that number again when a disk has been pulled, so two looks at different times
/// may see two disks of one sequence, size and serial number. A device that is open does not answer for
/// another disk: asked through the same open device, the same sequence is the same disk.
std::optional<DiskIdentity> identityOf(Device& volume, Device& disk);

/// Of the disk that the letter leads to; without a disk, or of several, the identity of none.
DiskIdentity identityBehind(Machine& machine, char letter);

/// Where the volume begins and how long it is, by the open volume itself; no value when it is not one piece.
std::optional<DISK_EXTENT> pieceOf(Device& volume);

/// Everything about the volume of that letter; no value when it is none of a disk. Without a medium it has 0
/// bytes; what could not be told is named in it.
std::optional<Volume> readVolume(Machine& machine, char letter);

/// Whether partitions of that type belong to dynamic disks.
bool isDynamicType(const PARTITION_INFORMATION_EX& partition);

/// {EBD0A0A2-B9E5-4433-87C0-68B6B72699C7}, a partition of a GPT that holds a file system of Windows.
/// https://learn.microsoft.com/windows/win32/api/winioctl/ns-winioctl-partition_information_gpt
extern const GUID basicData;

} // namespace fat32format
