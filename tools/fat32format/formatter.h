#pragma once

#include "tools/fat32format/command_line.h"
#include "tools/fat32format/system.h"

#include <string>

namespace fat32format {

/// Exit status of the program.
enum class Status : int {
    Done = 0,
    Failed = 1, ///< the disk cannot be opened or did not take it, or is of no size for it
    Usage = 2,
    UnknownLetter = 3,
    NoDisk = 4,       ///< no medium, or no disk at all
    SystemVolume = 5, ///< or what uses the disk cannot be told
    NotOnUsb = 6,
    Declined = 8,
    NotAuthorised = 9,
    WriteProtected = 10,
    InUse = 11,
    HasPartitions = 12,
    DiskChanged = 13,
    OtherDisk = 14,   ///< another disk than the drive was known for, or the table of drives tells of none
    MemberOfSet = 15, ///< a part of a RAID, a volume group or the like
    Encrypted = 16,   ///< with BitLocker
};

/// Formats the drive with FAT32 after the user has agreed. The last line it prints is "Done" when, and only
/// when, all of it has worked; it prints that word nowhere else.
Status format(System& system, const Options& options);

/// A text of a device or of the system, fit to be shown: one line of characters that can be printed,
/// without the word that stands for success.
std::string printable(std::string text);

} // namespace fat32format
