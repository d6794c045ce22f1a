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
    cleared_.push_back({begin, end});
    put_.erase(put_.lower_bound(begin), put_.lower_bound(end));
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
    put_[offset] = bytes;
    return volume_.write(offset, bytes);
}

bool VolumeWriter::store(std::uint64_t offset, const Bytes& bytes) {
    return put(offset, bytes) && flush() && verify(offset, bytes);
}

bool VolumeWriter::verify(std::uint64_t offset, const Bytes& bytes) {
    Bytes found(bytes.size());
    return volume_.read(offset, found) && found == bytes;
}

/// Sticks that are larger by their name than by their memory, and bad cables, lose what they have confirmed.
bool VolumeWriter::verifyAll() {
    return std::all_of(cleared_.begin(), cleared_.end(), [this](Range range) { return verify(range); });
}

bool VolumeWriter::verify(Range range) {
    for (std::uint64_t begin = range.begin; begin < range.end; begin += piece) {
        const Range part{begin, std::min(begin + piece, range.end)};
        if (!verify(begin, expected(part))) return false;
    }
    return true;
}

/// What has been put lies in one piece as a whole: both begin at a multiple of its length.
Bytes VolumeWriter::expected(Range range) const {
    Bytes bytes(static_cast<std::size_t>(range.end - range.begin));
    const auto end = put_.lower_bound(range.end);
    for (auto one = put_.lower_bound(range.begin); one != end; ++one)
        std::copy(one->second.begin(), one->second.end(),
                  bytes.begin() + static_cast<std::ptrdiff_t>(one->first - range.begin));
    return bytes;
}

/// Both tables and the root directory.
std::uint64_t Fat32Writer::clearedBytes(const Fat32Layout& layout) {
    return (std::uint64_t{layout.firstData()} + layout.wish.sectorsPerCluster) * layout.wish.sectorSize;
}

/// What Windows has behind each sector of information belongs to its own code for the start of a computer:
/// nothing reads it from a volume without that code, and here it stays empty.
bool Fat32Writer::writeTables() {
    if (!writer_.clear(base_, base_ + clearedBytes(layout_))) return false;
    const Bytes first = firstTableSector(layout_);
    const Bytes information = informationSector(layout_);
    return writer_.put(placeOf(layout_.reserved), first) &&
           writer_.put(placeOf(layout_.reserved + layout_.table), first) &&
           writer_.put(placeOf(layout_.firstData()), firstRootSector(layout_)) &&
           writer_.put(placeOf(informationPlace), information) &&
           writer_.put(placeOf(copyPlace + informationPlace), information) && writer_.flush();
}

bool Fat32Writer::writeBoot() {
    const Bytes boot = bootSector(layout_);
    return writer_.store(placeOf(copyPlace), boot) && writer_.store(placeOf(0), boot);
}

/// The first one first: nothing goes by the copy alone.
bool Fat32Writer::clearBoot() {
    const Bytes nothing(layout_.wish.sectorSize);
    const bool first = writer_.store(placeOf(0), nothing);
    const bool copy = writer_.store(placeOf(copyPlace), nothing);
    return first && copy;
}

} // namespace fat32format
