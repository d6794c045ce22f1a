#include "tools/fat32format/volume_writer.h"

#include <algorithm>

namespace fat32format {

namespace {

constexpr std::uint64_t piece = 1'048'576; // bytes, a multiple of every sector's length

} // namespace

/// The medium is waited for at every step, else the steps would tell how fast memory is.
bool VolumeWriter::countUp(std::uint64_t bytes) {
    constexpr std::uint64_t step = 10;
    written_ += bytes;
    const std::uint64_t percent = std::min<std::uint64_t>(written_ * 100 / expected_, 99) / step * step;
    if (percent <= percent_) return true;
    percent_ = percent;
    if (!volume_.flush()) return false;
    progress_(percent);
    return true;
}

bool VolumeWriter::clear(std::uint64_t begin, std::uint64_t end) {
    const Bytes zeros(piece);
    while (begin < end) {
        const std::uint64_t count = std::min(piece, end - begin);
        if (!volume_.write(begin, {zeros.data(), static_cast<std::size_t>(count)})) return false;
        if (!countUp(count)) return false;
        begin += count;
    }
    return volume_.flush();
}

bool VolumeWriter::put(std::uint64_t offset, const Bytes& bytes) {
    return volume_.write(offset, bytes);
}

bool VolumeWriter::verify(std::uint64_t offset, const Bytes& bytes) {
    Bytes found(bytes.size());
    return volume_.read(offset, found) && found == bytes;
}

/// Both tables and the root directory.
std::uint64_t Fat32Writer::clearedBytes(const Fat32Layout& layout) {
    return (std::uint64_t{layout.firstData()} + layout.wish.sectorsPerCluster) * layout.wish.sectorSize;
}

bool Fat32Writer::writeTables() {
    if (!writer_.clear(base_, base_ + clearedBytes(layout_))) return false;
    const Bytes first = firstTableSector(layout_);
    const Bytes information = informationSector(layout_);
    return writer_.put(placeOf(layout_.reserved), first) &&
           writer_.put(placeOf(layout_.reserved + layout_.table), first) &&
           writer_.put(placeOf(informationPlace), information) &&
           writer_.put(placeOf(copyPlace + informationPlace), information);
}

bool Fat32Writer::writeBoot() {
    const Bytes boot = bootSector(layout_);
    return writer_.put(placeOf(copyPlace), boot) && writer_.put(placeOf(0), boot);
}

bool Fat32Writer::verify() {
    const Bytes boot = bootSector(layout_);
    const Bytes first = firstTableSector(layout_);
    return writer_.verify(placeOf(0), boot) && writer_.verify(placeOf(copyPlace), boot) &&
           writer_.verify(placeOf(informationPlace), informationSector(layout_)) &&
           writer_.verify(placeOf(layout_.reserved), first) &&
           writer_.verify(placeOf(layout_.reserved + layout_.table), first);
}

} // namespace fat32format
