#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace fat32format {

constexpr unsigned mostSectorsPerCluster = 128; ///< of 512 bytes

/// What the program is asked to do.
struct Options {
    char letter = 0;                ///< upper case
    unsigned sectorsPerCluster = 0; ///< of 512 bytes; a power of two, at most mostSectorsPerCluster
    bool anyBus = false;            ///< the disk need not be on USB
    friend bool operator==(const Options&, const Options&) = default;
};

constexpr std::string_view usage =
    "usage: fat32format.exe [--any-bus] -cN X:\n"
    "  -cN        N sectors of 512 bytes a cluster: 1, 2, 4, 8, 16, 32, 64 or 128\n"
    "  X:         letter of the drive to format\n"
    "  --any-bus  also a disk that is not on USB\n"
    "or:    fat32format.exe --help\n";

/// What follows the usage when somebody asks for help.
constexpr std::string_view help =
    "\n"
    "Formats a drive with FAT32, whatever its size.\n"
    "\n"
    "It says which disk is meant (model, serial number, size) and what is on it, and\n"
    "asks. Only the answer \"y\" lets it go on: then everything on the drive is lost.\n"
    "With any other answer nothing is changed.\n"
    "\n"
    "It refuses drives that the system runs from or uses, disks that are not on USB\n"
    "(but for --any-bus), disks that are write-protected, in use or part of a set of\n"
    "disks, and a disk that is another one by the time of the answer. Writing to a\n"
    "disk takes an administrator's rights, which the system asks for.\n"
    "\n"
    "exit status:\n"
    "   0  formatted, or this help\n"
    "   1  failed: the disk cannot be opened or written to, or has no size for such\n"
    "      clusters\n"
    "   2  wrong usage\n"
    "   3  no such drive\n"
    "   4  no disk, or no medium in it\n"
    "   5  the system uses the disk\n"
    "   6  not on USB\n"
    "   8  not answered with \"y\"\n"
    "   9  the rights were refused\n"
    "  10  write-protected\n"
    "  11  in use\n"
    "  12  a whole disk that has partitions\n"
    "  13  another disk by the time of the answer\n"
    "  14  another disk than the drive was known for\n"
    "  15  part of a set of disks\n"
    "  16  encrypted\n";

/// Whether the only argument is "--help", "-?" or "/?".
bool asksForHelp(std::span<const std::string> arguments);

/// The arguments without the program's name; no value when they are not as `usage` says.
std::optional<Options> parseArguments(std::span<const std::string> arguments);

} // namespace fat32format
