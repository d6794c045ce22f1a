#include "platform/linux/drives/fat_label.h"

#include "base/little_endian.h"
#include "platform/linux/base/device_io.h"
#include "platform/linux/base/dos_text.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <optional>
#include <span>
#include <vector>

namespace platform::linux {

namespace {

constexpr std::size_t nameLength = 11;
constexpr std::size_t entrySize = 32;
constexpr std::size_t bootSize = 512;
constexpr std::uint64_t largestFolder = 65536 * entrySize;
constexpr std::uint8_t unusedEntry = 0xE5;
constexpr std::uint8_t labelAttribute = 0x08;

using Name = std::array<char, nameLength>;
using Entry = std::array<std::uint8_t, entrySize>;
using Boot = std::array<std::uint8_t, bootSize>;

std::uint32_t number(std::span<const std::uint8_t> bytes, std::size_t at, std::size_t count) {
    return static_cast<std::uint32_t>(base::littleEndian(bytes, at, count));
}

bool isPowerOfTwo(std::uint32_t value) {
    return value != 0 && (value & (value - 1)) == 0;
}

/// Where things lie; in bytes from the start of the device.
struct Layout {
    bool wide = false; ///< FAT32, whose root directory is a chain of clusters
    std::uint64_t sector = 0;
    std::uint64_t cluster = 0;
    std::uint64_t table = 0;
    std::uint64_t root = 0; ///< on FAT12 and FAT16
    std::uint64_t rootSize = 0;
    std::uint64_t data = 0;
    std::uint32_t clusters = 0;
    std::uint32_t rootCluster = 0;
    std::uint64_t bootCopy = 0; ///< 0 when there is none
    std::size_t bootLabel = 0;  ///< in the boot sector; 0 when it has none
};

std::optional<Layout> layoutOf(const Boot& boot) {
    const std::uint32_t sector = number(boot, 11, 2);
    const std::uint32_t perCluster = boot[13];
    const std::uint32_t reserved = number(boot, 14, 2);
    const std::uint32_t tables = boot[16];
    const std::uint32_t rootEntries = number(boot, 17, 2);
    const std::uint32_t sectors = number(boot, 19, 2) != 0 ? number(boot, 19, 2) : number(boot, 32, 4);
    const std::uint32_t perTable = number(boot, 22, 2) != 0 ? number(boot, 22, 2) : number(boot, 36, 4);
    const bool signed_ = boot[510] == 0x55 && boot[511] == 0xAA;
    if (!signed_ || !isPowerOfTwo(sector) || sector < bootSize || sector > 4096 ||
        !isPowerOfTwo(perCluster) || reserved == 0 || tables == 0 || perTable == 0)
        return std::nullopt;
    Layout layout;
    layout.sector = sector;
    layout.cluster = std::uint64_t{sector} * perCluster;
    layout.table = std::uint64_t{reserved} * sector;
    layout.root = layout.table + std::uint64_t{tables} * perTable * sector;
    layout.rootSize = std::uint64_t{rootEntries} * entrySize;
    layout.data = (layout.root + layout.rootSize + sector - 1) / sector * sector;
    const std::uint64_t end = std::uint64_t{sectors} * sector;
    if (end <= layout.data) return std::nullopt;
    layout.clusters = static_cast<std::uint32_t>((end - layout.data) / layout.cluster);
    layout.wide = number(boot, 22, 2) == 0;
    if (layout.wide != (rootEntries == 0)) return std::nullopt;
    const std::size_t extended = layout.wide ? 66 : 38;
    if (boot[extended] == 0x29) layout.bootLabel = extended + 5;
    if (layout.wide) {
        constexpr std::uint32_t oneTableInUse = 0x80; // the others are not kept up with it
        const std::uint32_t flags = number(boot, 40, 2);
        const std::uint32_t active = (flags & oneTableInUse) != 0 ? flags & 0x0F : 0;
        if (active >= tables) return std::nullopt;
        layout.table += std::uint64_t{active} * perTable * sector;
        layout.rootCluster = number(boot, 44, 4);
        const std::uint32_t copy = number(boot, 50, 2);
        if (copy != 0 && copy < reserved) layout.bootCopy = std::uint64_t{copy} * sector;
    }
    return layout;
}

struct Extent {
    std::uint64_t at = 0;
    std::uint64_t size = 0;
};

/// The parts of the root directory, in their order. No value when its chain is damaged.
std::optional<std::vector<Extent>> rootFolder(int device, const Layout& layout) {
    if (!layout.wide) return std::vector<Extent>{{layout.root, layout.rootSize}};
    constexpr std::uint32_t numberBits = 0x0FFFFFFF;
    constexpr std::uint32_t endOfChain = 0x0FFFFFF8;
    std::vector<Extent> extents;
    std::uint32_t cluster = layout.rootCluster;
    while (cluster < endOfChain) {
        if (cluster < 2 || cluster - 2 >= layout.clusters || extents.size() * layout.cluster >= largestFolder)
            return std::nullopt;
        extents.push_back({layout.data + (cluster - 2) * layout.cluster, layout.cluster});
        std::array<std::uint8_t, 4> next{};
        if (!readAt(device, layout.table + std::uint64_t{cluster} * next.size(), next)) return std::nullopt;
        cluster = number(next, 0, next.size()) & numberBits;
    }
    return extents;
}

bool isLabel(std::span<const std::uint8_t> entry) {
    constexpr std::uint8_t kind = 0x3F; // a part of a long name has all of the lowest four bits
    return (entry[11] & kind) == labelAttribute;
}

struct EntryPlace {
    std::uint64_t at = 0;
    bool holdsLabel = false;
    bool endsFolder = false;
    std::uint64_t next = 0; ///< where the entry behind it lies; 0 when it is the last of the folder
};

/// The entry that holds the label, else the first one that is not in use. No value when there is neither.
std::optional<EntryPlace> findEntry(int device, const std::vector<Extent>& folder) {
    std::optional<EntryPlace> unused;
    std::vector<std::uint8_t> bytes;
    for (std::size_t part = 0; part < folder.size(); ++part) {
        const Extent& extent = folder[part];
        const std::uint64_t nextPart = part + 1 < folder.size() ? folder[part + 1].at : 0;
        bytes.resize(extent.size);
        if (!readAt(device, extent.at, bytes)) return std::nullopt;
        for (std::size_t i = 0; i + entrySize <= bytes.size(); i += entrySize) {
            const auto entry = std::span(bytes).subspan(i, entrySize);
            const bool ends = entry[0] == 0;
            const bool lastOfPart = i + 2 * entrySize > bytes.size();
            const std::uint64_t next = lastOfPart ? nextPart : extent.at + i + entrySize;
            if (!ends && entry[0] != unusedEntry && isLabel(entry))
                return EntryPlace{extent.at + i, true, false, next};
            if (!unused && (ends || entry[0] == unusedEntry))
                unused = EntryPlace{extent.at + i, false, ends, next};
            if (ends) return unused;
        }
    }
    return unused;
}

/// Date and time as FAT has them, in the last four bytes but six of an entry.
void stamp(Entry& entry) {
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    localtime_r(&now, &local);
    const int time = local.tm_hour << 11 | local.tm_min << 5 | local.tm_sec / 2;
    const int date = std::max(local.tm_year - 80, 0) << 9 | (local.tm_mon + 1) << 5 | local.tm_mday;
    base::putLittleEndian(entry, 22, 2, static_cast<std::uint32_t>(time));
    base::putLittleEndian(entry, 24, 2, static_cast<std::uint32_t>(date));
}

std::span<const std::uint8_t> bytesOf(const Name& name) {
    return {reinterpret_cast<const std::uint8_t*>(name.data()), name.size()};
}

bool writeEntry(int device, const EntryPlace& place, const Name& name) {
    Entry entry{};
    if (place.holdsLabel && !readAt(device, place.at, entry)) return false;
    std::copy(name.begin(), name.end(), entry.begin());
    entry[11] = labelAttribute;
    stamp(entry);
    // What lies behind the end of a folder need not be empty: the end is marked anew before it moves.
    const std::array<std::uint8_t, 1> end{0};
    if (place.endsFolder && place.next != 0 && !writeAt(device, place.next, end)) return false;
    return writeAt(device, place.at, entry);
}

/// One that is a boot sector of the same file system.
bool writeBootLabel(int device, const Layout& layout, const Boot& boot, std::uint64_t at, const Name& name) {
    constexpr std::size_t serial = 4;
    Boot there{};
    if (!readAt(device, at, there)) return false;
    const std::size_t identity = layout.bootLabel - serial;
    if (!std::equal(there.begin() + identity, there.begin() + layout.bootLabel, boot.begin() + identity) ||
        there[510] != 0x55 || there[511] != 0xAA)
        return true;
    return writeAt(device, at + layout.bootLabel, bytesOf(name));
}

std::optional<Name> nameOf(std::string_view label) {
    constexpr std::string_view forbidden = "\"*+,./:;<=>?[\\]|";
    const auto bytes = toDos(dosCapitals(label));
    if (!bytes || bytes->empty() || bytes->size() > nameLength || bytes->front() == ' ') return std::nullopt;
    // As the first byte this one marks an entry that is not in use.
    if (static_cast<std::uint8_t>(bytes->front()) == unusedEntry) return std::nullopt;
    for (const char byte : *bytes)
        if ((byte >= 0 && byte < ' ') || byte == 0x7F || forbidden.find(byte) != std::string_view::npos)
            return std::nullopt;
    Name name;
    name.fill(' ');
    std::copy(bytes->begin(), bytes->end(), name.begin());
    return name;
}

bool writeName(int device, const Name& name) {
    Boot boot{};
    if (!readAt(device, 0, boot)) return false;
    const auto layout = layoutOf(boot);
    if (!layout) return false;
    const auto folder = rootFolder(device, *layout);
    if (!folder) return false;
    const auto place = findEntry(device, *folder);
    if (!place || !writeEntry(device, *place, name)) return false;
    if (layout->bootLabel != 0) {
        if (!writeBootLabel(device, *layout, boot, 0, name)) return false;
        if (layout->bootCopy != 0 && !writeBootLabel(device, *layout, boot, layout->bootCopy, name))
            return false;
    }
    return fdatasync(device) == 0;
}

} // namespace

FatLabel writeFatLabel(int device, std::string_view label) {
    const auto name = nameOf(label);
    if (!name) return FatLabel::Refused;
    return writeName(device, *name) ? FatLabel::Done : FatLabel::Failed;
}

} // namespace platform::linux
