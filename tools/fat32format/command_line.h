#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace fat32format {

/// What the program is asked to do.
struct Options {
    char letter = 0;                ///< upper case
    unsigned sectorsPerCluster = 0; ///< of 512 bytes; a power of two, at most 128
    bool anyBus = false;            ///< the disk need not be on USB
    friend bool operator==(const Options&, const Options&) = default;
};

constexpr std::string_view usage =
    "usage: fat32format.exe [--any-bus] -cN X:\n"
    "  -cN        N sectors of 512 bytes a cluster: 1, 2, 4, 8, 16, 32, 64 or 128\n"
    "  X:         letter of the drive to format\n"
    "  --any-bus  also a disk that is not on USB\n";

/// The arguments without the program's name; no value when they are not as `usage` says.
std::optional<Options> parseArguments(std::span<const std::string> arguments);

} // namespace fat32format
