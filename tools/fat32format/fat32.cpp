#include "tools/fat32format/fat32.h"

#include "base/letters.h"
#include "base/little_endian.h"
#include "base/trim.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace fat32format {

namespace {

constexpr std::uint32_t fewestReserved = 32;
constexpr std::uint32_t entrySize = 4;     // bytes, of a table
constexpr std::uint32_t unusedEntries = 2; // in front of the first cluster's
constexpr std::size_t sectorMark = 510;    // whatever the size of the sector
constexpr std::size_t labelLength = 11;
constexpr std::string_view noLabel = "NO NAME"; // stands in the boot sector of a volume without one

constexpr std::uint32_t tracksOfHeads = 255; // what every disk is said to have that counts in blocks
constexpr std::uint32_t sectorsOfTrack = 63;

class SectorWriter {
public:
    explicit SectorWriter(std::uint32_t size) : bytes_(size) {}

    void byte(std::size_t place, std::uint32_t value) {
        bytes_.at(place) = static_cast<unsigned char>(value & 0xFFU);
    }
    void word(std::size_t place, std::uint32_t value) { base::putLittleEndian(bytes_, place, 2, value); }
    void number(std::size_t place, std::uint32_t value) { base::putLittleEndian(bytes_, place, 4, value); }
    void text(std::size_t place, std::string_view text) {
        std::copy(text.begin(), text.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(place));
    }
    Bytes marked() {
        word(sectorMark, 0xAA55);
        return bytes_;
    }
    Bytes plain() const { return bytes_; }

private:
    Bytes bytes_;
};

/// Sectors of a table for all clusters behind two of them: the smallest number that fulfils
/// table * size / 4 >= (sectors - reserved - 2 * table) / perCluster + 2.
std::uint64_t tableLength(const Fat32Wish& wish, std::uint64_t sectors) {
    const std::uint64_t toShare =
        entrySize * (sectors - fewestReserved + std::uint64_t{unusedEntries} * wish.sectorsPerCluster);
    const std::uint64_t each = std::uint64_t{wish.sectorSize} * wish.sectorsPerCluster + 2ULL * entrySize;
    return (toShare + each - 1) / each;
}

/// So that clusters begin where the disk's own larger units do, as far as the volume does.
std::uint64_t reservedSectors(const Fat32Wish& wish, std::uint64_t table) {
    const std::uint64_t over = (fewestReserved + 2 * table) % wish.sectorsPerCluster;
    return over == 0 ? fewestReserved : fewestReserved + wish.sectorsPerCluster - over;
}

/// Place of a sector as old systems count, in three bytes; what they cannot count is a mark of its own.
void writeOldPlace(SectorWriter& sector, std::size_t at, std::uint64_t place) {
    const std::uint64_t cylinder = place / (std::uint64_t{tracksOfHeads} * sectorsOfTrack);
    const bool isBeyond = cylinder > 1023;
    const auto head = static_cast<std::uint32_t>(isBeyond ? 254 : place / sectorsOfTrack % tracksOfHeads);
    const auto low = static_cast<std::uint32_t>(isBeyond ? 1023 : cylinder);
    const auto number = static_cast<std::uint32_t>(isBeyond ? sectorsOfTrack : place % sectorsOfTrack + 1);
    sector.byte(at, head);
    sector.byte(at + 1, number | (low >> 8U << 6U));
    sector.byte(at + 2, low);
}

bool isSectorOfFat(std::uint32_t size) {
    return size >= 512 && size <= 4096 && std::has_single_bit(size);
}

/// Whether a label may have it; small letters have become capitals.
bool isOfLabel(char c) {
    constexpr std::string_view others = "\"*+,./:;<=>?[\\]|";
    return c >= ' ' && c <= '~' && others.find(c) == std::string_view::npos;
}

std::string padded(std::string text) {
    text.resize(labelLength, ' ');
    return text;
}

/// Days count from 1980 on, and years up to 2107.
std::uint32_t fatDate(const std::tm& time) {
    const int year = std::clamp(time.tm_year - 80, 0, 127);
    const int day = std::max(time.tm_mday, 1); // 0 where no time is given at all
    return static_cast<std::uint32_t>(year * 512 + (time.tm_mon + 1) * 32 + day);
}

/// In steps of two seconds.
std::uint32_t fatTime(const std::tm& time) {
    return static_cast<std::uint32_t>(time.tm_hour * 2048 + time.tm_min * 32 + std::min(time.tm_sec, 59) / 2);
}

} // namespace

std::string fatLabel(std::string_view label) {
    std::string kept(base::trim(label, " "));
    std::transform(kept.begin(), kept.end(), kept.begin(), [](char c) { return base::upper(c); });
    const bool canBeKept =
        kept.size() <= labelLength && std::all_of(kept.begin(), kept.end(), isOfLabel) && kept != noLabel;
    return canBeKept ? kept : std::string();
}

std::optional<Fat32Layout> fat32Layout(const Fat32Wish& wish) {
    if (!isSectorOfFat(wish.sectorSize)) return std::nullopt;
    const std::uint64_t sectors =
        std::min<std::uint64_t>(wish.sectors, std::numeric_limits<std::uint32_t>::max());
    if (sectors <= fewestReserved) return std::nullopt;
    const std::uint64_t table = tableLength(wish, sectors);
    const std::uint64_t reserved = reservedSectors(wish, table);
    if (reserved + 2 * table + wish.sectorsPerCluster > sectors) return std::nullopt;
    const std::uint64_t clusters = (sectors - reserved - 2 * table) / wish.sectorsPerCluster;
    if (clusters < fewestClusters || clusters > mostClusters) return std::nullopt;
    Fat32Layout layout;
    layout.wish = wish;
    layout.sectors = static_cast<std::uint32_t>(sectors);
    layout.reserved = static_cast<std::uint32_t>(reserved);
    layout.table = static_cast<std::uint32_t>(table);
    layout.clusters = static_cast<std::uint32_t>(clusters);
    return layout;
}

Bytes bootSector(const Fat32Layout& layout) {
    constexpr std::uint32_t rootCluster = 2;
    SectorWriter sector(layout.wish.sectorSize);
    sector.text(0, "\xEB\x58\x90");
    sector.text(3, "MSWIN4.1"); // some devices look for it
    sector.word(11, layout.wish.sectorSize);
    sector.byte(13, layout.wish.sectorsPerCluster);
    sector.word(14, layout.reserved);
    sector.byte(16, 2);    // tables
    sector.byte(21, 0xF8); // a medium that is not taken out
    sector.word(24, sectorsOfTrack);
    sector.word(26, tracksOfHeads);
    sector.number(28, layout.wish.sectorsBefore);
    sector.number(32, layout.sectors);
    sector.number(36, layout.table);
    sector.number(44, rootCluster);
    sector.word(48, informationPlace);
    sector.word(50, copyPlace);
    sector.byte(64, 0x80); // number of the disk
    sector.byte(66, 0x29); // the next three are there
    sector.number(67, layout.wish.serial);
    sector.text(71, padded(layout.wish.label.empty() ? std::string(noLabel) : layout.wish.label));
    sector.text(82, "FAT32   ");
    sector.text(90, "\xCD\x18\xEB\xFE"); // a computer that starts from it goes on with its next disk
    return sector.marked();
}

Bytes informationSector(const Fat32Layout& layout) {
    SectorWriter sector(layout.wish.sectorSize);
    sector.number(0, 0x41615252);
    sector.number(484, 0x61417272);
    sector.number(488, layout.clusters - 1); // free ones: the root directory has one
    sector.number(492, unusedEntries);       // the last one taken
    return sector.marked();
}

Bytes firstTableSector(const Fat32Layout& layout) {
    SectorWriter sector(layout.wish.sectorSize);
    sector.number(0, 0x0FFFFFF8); // the medium, as in the boot sector
    sector.number(4, 0x0FFFFFFF); // in order
    sector.number(8, 0x0FFFFFFF); // the root directory ends with its first cluster
    return sector.plain();
}

Bytes firstRootSector(const Fat32Layout& layout) {
    constexpr std::uint32_t labelOfVolume = 0x08;
    SectorWriter sector(layout.wish.sectorSize);
    if (layout.wish.label.empty()) return sector.plain();
    sector.text(0, padded(layout.wish.label));
    sector.byte(11, labelOfVolume);
    sector.word(22, fatTime(layout.wish.labelled));
    sector.word(24, fatDate(layout.wish.labelled));
    return sector.plain();
}

Bytes partitionTable(std::uint32_t sectorSize, std::uint32_t start, std::uint32_t count,
                     std::uint32_t signature) {
    constexpr std::size_t entry = 446;
    constexpr std::uint32_t fat32 = 0x0C;
    SectorWriter sector(sectorSize);
    sector.number(440, signature);
    writeOldPlace(sector, entry + 1, start);
    sector.byte(entry + 4, fat32);
    writeOldPlace(sector, entry + 5, std::uint64_t{start} + count - 1);
    sector.number(entry + 8, start);
    sector.number(entry + 12, count);
    return sector.marked();
}

} // namespace fat32format
