// What the kernel and udev tell about a block device.
#pragma once

#include "tools/fat32format/system.h"

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

/// From a device number; no value when the kernel does not know it. What cannot be read is named in the
/// volume, whose other facts are then not to be relied on.
std::optional<Volume> readFacts(const FactFolders& folders, unsigned major, unsigned minor);

/// Whether a mount at that place is the user's; every other one belongs to the system.
bool isUsersPlace(const std::string& place);

} // namespace fat32format
