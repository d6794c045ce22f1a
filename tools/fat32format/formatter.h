#pragma once

#include "tools/fat32format/command_line.h"
#include "tools/fat32format/system.h"

#include <string>

namespace fat32format {

/// Exit status of the program.
enum class Status : int {
    Done = 0,
    Failed = 1, ///< a tool failed, or the disk did not take it
    Usage = 2,
    UnknownLetter = 3,
    NoDisk = 4, ///< no medium, or no disk at all
    SystemVolume = 5,
    NotOnUsb = 6,
    MissingTool = 7,
    Declined = 8,
    NotAuthorised = 9,
    WriteProtected = 10,
    InUse = 11,
    HasPartitions = 12,
    DiskChanged = 13,
};

/// Formats the drive with FAT32 after the user has agreed. The last line it prints is "Done" when, and only
/// when, all of it has worked; it prints that word nowhere else.
Status format(System& system, const Options& options);

/// A text of a device or of another program, fit to be shown: one line of characters that can be printed,
/// without the word that stands for success.
std::string printable(std::string text);

/// How much mkfs.fat writes to a volume: both tables, and little more.
std::uint64_t bytesToWrite(std::uint64_t volumeBytes, std::uint64_t clusterBytes);

} // namespace fat32format
