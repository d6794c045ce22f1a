// What the kernel tells of a volume by a folder on it.
#pragma once

#include "platform/linux/drives/drive_source.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace platform::linux {

bool isFolder(const std::string& path);

/// No value when there is no such folder.
std::optional<VolumeSpace> folderSpace(const std::string& folder);

/// Bytes of all regular files below the folder; links are not followed, what may not be read counts nothing.
/// No value when the folder cannot be gone through to its end, or not in that time.
std::optional<std::uint64_t> bytesBelow(const std::string& folder, std::chrono::milliseconds longest);

/// Writes out everything that the folder's file system still holds back; false when that failed.
bool syncFileSystem(const std::string& folder);

/// Number of the device that the folder lies on; no value when there is no such folder.
std::optional<std::uint64_t> deviceOf(const std::string& folder);

/// Tells a folder from every other one that is there at this moment.
std::string folderIdentity(const struct stat& folder);

/// Where the kernel shows each block device by its number.
inline constexpr const char* deviceFolder = "/sys/dev/block";

/// Path of what the kernel shows of that block device.
std::string shownDevice(std::uint64_t deviceNumber, const std::string& devices = deviceFolder);

/// The number that the kernel gave the disk of a block device when it was plugged in, and gives no other one
/// until the next start: device numbers and names are given again. Empty before Linux 5.15.
/// https://www.kernel.org/doc/Documentation/ABI/testing/sysfs-block
std::string diskSequence(std::uint64_t deviceNumber, const std::string& devices = deviceFolder);

/// Whether the kernel has found partitions on that block device. It has looked for them before it announces a
/// disk; whoever listens to it learns of them one after the other.
bool hasPartitions(std::uint64_t deviceNumber, const std::string& devices = deviceFolder);

/// The kernel's list of what is mounted where, as this process sees it.
inline constexpr const char* mountTable = "/proc/self/mounts";

/// Folder that the block device ("/dev/sdb1") is mounted on by such a list. One that lies on another device
/// does not count, nor does one that this user may not look into.
std::optional<std::string> mountPointOf(const std::string& blockDevice, std::uint64_t number,
                                        const std::string& table = mountTable);

/// Kind of the file system that is mounted on the folder ("ext4"); empty when none is.
std::string mountedFileSystem(const std::string& folder);

} // namespace platform::linux
