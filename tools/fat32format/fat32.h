// The structures of an empty FAT32 file system, and of a partition table with one partition.
// Microsoft, "FAT: General Overview of On-Disk Format" (fatgen103)
#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fat32format {

using Bytes = std::vector<unsigned char>;

struct Fat32Wish {
    std::uint32_t sectorSize = 512; ///< bytes; FAT knows 512, 1024, 2048 and 4096
    std::uint64_t sectors = 0;      ///< of the volume; what is more than FAT32 can count stays unused
    std::uint32_t sectorsPerCluster = 1;
    std::uint32_t sectorsBefore = 0; ///< between the beginning of the disk and the volume
    std::uint32_t serial = 0;        ///< of the volume; any number
    std::string label;               ///< as fatLabel() makes it; empty for none
    std::tm labelled = {};           ///< when it got the label, by the user's clock
};

/// Where everything lies, in sectors from the beginning of the volume.
struct Fat32Layout {
    Fat32Wish wish;
    std::uint32_t sectors = 0;  ///< that the file system uses
    std::uint32_t reserved = 0; ///< in front of the first table
    std::uint32_t table = 0;    ///< length of one of the two tables
    std::uint32_t clusters = 0;

    std::uint32_t firstData() const { return reserved + 2 * table; }
};

/// The number of clusters alone tells the kinds of FAT apart: with fewer, a volume would be taken for FAT16.
inline constexpr std::uint64_t fewestClusters = 65'525;
/// The first one has the number 2, and those from 0x0FFFFFF7 on are marks. The one before the marks is left
/// to nobody, since not every reader takes it.
inline constexpr std::uint64_t mostClusters = 0x0FFF'FFF4;

/// No value when the volume has fewer or more clusters than FAT32 can, or sectors that FAT does not know.
std::optional<Fat32Layout> fat32Layout(const Fat32Wish& wish);

/// A label as FAT keeps it, at most 11 characters of ASCII in capitals; empty when FAT cannot keep it.
std::string fatLabel(std::string_view label);

/// One sector each.
Bytes bootSector(const Fat32Layout& layout);
Bytes informationSector(const Fat32Layout& layout);
Bytes firstTableSector(const Fat32Layout& layout);
Bytes firstRootSector(const Fat32Layout& layout); ///< of the root folder, which is empty but for the label

inline constexpr std::uint32_t informationPlace = 1; ///< sector of the volume
inline constexpr std::uint32_t copyPlace = 6;        ///< of the boot sector and the one behind it

/// The first sector of a disk with one partition of type FAT32 (LBA); the others count in sectors.
Bytes partitionTable(std::uint32_t sectorSize, std::uint32_t start, std::uint32_t count,
                     std::uint32_t signature);

} // namespace fat32format
