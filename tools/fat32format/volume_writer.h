#pragma once

#include "tools/fat32format/fat32.h"
#include "tools/fat32format/system.h"

#include <cstdint>
#include <functional>
#include <map>
#include <utility>
#include <vector>

namespace fat32format {

/// Writes to a volume, and tells how far it has come. Each returns whether it has worked; after one that has
/// not, nothing more may be written but what takes back what has been.
class VolumeWriter {
public:
    /// `progress` is told each percentage that is a multiple of ten, but not 100, of `expected` bytes.
    VolumeWriter(HeldVolume& volume, std::uint64_t expected, std::function<void(std::uint64_t)> progress)
        : volume_(volume), expected_(expected), progress_(std::move(progress)) {}

    /// A range of zeros, on the medium when it returns.
    bool clear(std::uint64_t begin, std::uint64_t end);
    bool put(std::uint64_t offset, const Bytes& bytes);
    /// On the medium and read back when it returns.
    bool store(std::uint64_t offset, const Bytes& bytes);
    bool flush() { return volume_.flush(); }
    /// Whether everything written is: each range that has been cleared, with what has been put there since.
    bool verifyAll();

private:
    struct Range {
        std::uint64_t begin;
        std::uint64_t end;
    };

    bool countUp(std::uint64_t bytes);
    Bytes expected(Range range) const;
    bool verify(std::uint64_t offset, const Bytes& bytes);
    bool verify(Range range);

    HeldVolume& volume_;
    std::uint64_t expected_;
    std::function<void(std::uint64_t)> progress_;
    std::uint64_t written_ = 0;
    std::uint64_t percent_ = 0;
    std::vector<Range> cleared_;
    std::map<std::uint64_t, Bytes> put_; ///< since the last clearing, whole sectors by their offset
};

/// Writes an empty FAT32 file system that begins `base` bytes from the beginning of the volume. What marks it
/// as one comes last, when all the rest is known to be there: wherever the power goes, it is nothing rather
/// than half a file system. The caller has made the one before unusable.
class Fat32Writer {
public:
    Fat32Writer(VolumeWriter& writer, Fat32Layout layout, std::uint64_t base)
        : writer_(writer), layout_(std::move(layout)), base_(base) {}

    /// How much is cleared for a file system.
    static std::uint64_t clearedBytes(const Fat32Layout& layout);

    /// All but the boot sectors, on the medium when it returns.
    bool writeTables();
    /// On the medium and read back when it returns.
    bool writeBoot();
    /// As far as it can be.
    bool clearBoot();

private:
    std::uint64_t placeOf(std::uint64_t sector) const { return base_ + sector * layout_.wish.sectorSize; }

    VolumeWriter& writer_;
    Fat32Layout layout_;
    std::uint64_t base_;
};

} // namespace fat32format
