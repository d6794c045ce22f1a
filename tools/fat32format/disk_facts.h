// What the kernel and udev tell about a block device.
#pragma once

#include "tools/fat32format/system.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace fat32format {

/// Where it is told.
struct FactFolders {
    std::filesystem::path sys = "/sys";
    std::filesystem::path proc = "/proc";
    std::filesystem::path udev = "/run/udev/data";
};

/// Everything of a volume but its stable name, from its device number; no value when the kernel does not know
/// it.
std::optional<Volume> readFacts(const FactFolders& folders, unsigned major, unsigned minor);

/// Bytes that have been written to a device, "/dev/sdb1", since the system started; 0 when that is not known.
std::uint64_t readBytesWritten(const FactFolders& folders, unsigned major, unsigned minor);

/// Whether a mount at that place is the user's; every other one belongs to the system.
bool isUsersPlace(const std::string& place);

} // namespace fat32format
