// The formatter on an image file, for tests: all of its portable code, from the command line's numbers to the
// last sector. The image may be larger than the disk that it lies on: what is written as zeros stays a hole.
//
//   image_formatter IMAGE [NAME=VALUE]...
//
// cluster  N of -cN                          sector  bytes of a sector
// offset   of the volume in the image        bytes   of the volume; to the end of the image
// start    of the volume on its disk         whole   1: the image is a disk without partitions
// label    of the volume before              serial  what random numbers are
// record   a file for all that is written: "write OFFSET LENGTH" and the bytes, "zeros OFFSET LENGTH",
//          "flush", a line each; offsets in the image
//
// The exit status is the formatter's.
#include "tools/fat32format/formatter.h"

#include "platform/linux/base/device_io.h"
#include "platform/linux/base/unique_fd.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iostream>
#include <malloc.h>
#include <map>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using namespace fat32format;

namespace {

using platform::linux::UniqueFd;

constexpr int ownMemory = 16 * 1'048'576; // bytes, more than all pieces at a time

/// The options, all of them numbers but two.
class Wish {
public:
    Wish(int count, char** words) {
        for (int i = 2; i < count; ++i) {
            const std::string word = words[i];
            const std::size_t sign = std::min(word.find('='), word.size() - 1);
            values_[word.substr(0, sign)] = word.substr(sign + 1);
        }
    }
    std::string text(const std::string& name) const {
        const auto found = values_.find(name);
        return found == values_.end() ? std::string() : found->second;
    }
    std::uint64_t number(const std::string& name, std::uint64_t otherwise) const {
        const std::string value = text(name);
        return value.empty() ? otherwise : std::stoull(value);
    }

private:
    std::map<std::string, std::string> values_;
};

class Record {
public:
    explicit Record(const std::string& file) {
        if (!file.empty()) file_.open(file, std::ios::binary | std::ios::trunc);
    }
    void write(std::uint64_t offset, std::span<const unsigned char> bytes, bool areZeros) {
        if (!file_.is_open()) return;
        file_ << (areZeros ? "zeros " : "write ") << offset << ' ' << bytes.size() << '\n';
        if (!areZeros)
            file_.write(reinterpret_cast<const char*>(bytes.data()), // NOLINT(*-reinterpret-cast)
                        static_cast<std::streamsize>(bytes.size()));
    }
    void flush() {
        if (file_.is_open()) file_ << "flush\n";
    }

private:
    std::ofstream file_;
};

class HeldImage : public HeldVolume {
public:
    HeldImage(Volume volume, int image, std::uint64_t offset, Record& record)
        : volume_(std::move(volume)), image_(image), offset_(offset), record_(record) {}

    std::optional<DiskIdentity> identity() override { return volume_.identity(); }
    std::uint64_t bytes() override { return volume_.bytes; }
    std::optional<std::vector<Signature>> signatures() override { return std::vector<Signature>(); }
    std::optional<std::vector<Signature>> diskSignatures() override { return std::vector<Signature>(); }
    bool read(std::uint64_t offset, std::span<unsigned char> bytes) override {
        return isInside(offset, bytes.size()) && platform::linux::readAt(image_, offset_ + offset, bytes);
    }
    bool write(std::uint64_t offset, std::span<const unsigned char> bytes) override {
        if (!isInside(offset, bytes.size())) return false;
        const bool areZeros =
            bytes.front() == 0 && std::memcmp(bytes.data(), bytes.data() + 1, bytes.size() - 1) == 0;
        record_.write(offset_ + offset, bytes, areZeros);
        if (!areZeros) return platform::linux::writeAt(image_, offset_ + offset, bytes);
        return fallocate(image_, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE,
                         static_cast<off_t>(offset_ + offset), static_cast<off_t>(bytes.size())) == 0;
    }
    bool flush() override {
        record_.flush();
        return true;
    }
    void tableHasChanged() override {}
    bool setPartitionType() override { return true; }

private:
    /// Whole sectors of the volume, and nothing beside it.
    bool isInside(std::uint64_t offset, std::uint64_t count) const {
        return offset % volume_.sectorSize == 0 && count % volume_.sectorSize == 0 &&
               count <= volume_.bytes && offset <= volume_.bytes - count;
    }

    /// The kernel reads zeros too, but page by page: most of a large table would take seconds.
    bool isHole(std::uint64_t begin, std::uint64_t count) const {
        const off_t data = lseek(image_, static_cast<off_t>(begin), SEEK_DATA);
        return data < 0 ? errno == ENXIO : static_cast<std::uint64_t>(data) >= begin + count;
    }

    Volume volume_;
    int image_;
    std::uint64_t offset_;
    Record& record_;
};

class ImageSystem : public System {
public:
    ImageSystem(std::string path, const Wish& wish)
        : image_(::open(path.c_str(), O_RDWR | O_CLOEXEC)), // NOLINT(*-vararg)
          offset_(wish.number("offset", 0)),
          serial_(static_cast<std::uint32_t>(wish.number("serial", 0x12345678))),
          record_(wish.text("record")) {
        struct stat info {};
        if (fstat(image_.get(), &info) != 0) return;
        volume_.node = volume_.diskNode = std::move(path);
        volume_.diskSequence = 1;
        volume_.bytes = wish.number("bytes", static_cast<std::uint64_t>(info.st_size) - offset_);
        volume_.diskBytes = volume_.bytes;
        volume_.start = wish.number("start", offset_);
        volume_.sectorSize = static_cast<std::uint32_t>(wish.number("sector", 512));
        volume_.isPartition = wish.number("whole", 0) == 0;
        volume_.diskHasPartitions = volume_.isPartition;
        volume_.label = wish.text("label");
        volume_.onUsb = true;
    }

    std::string tableProblem() override { return {}; }
    std::optional<Target> targetOf(char /*letter*/) override {
        return Target{volume_.node, volume_.identity()};
    }
    std::optional<Volume> inspect(const std::string& /*node*/) override { return volume_; }
    std::string systemsOwn() override { return {}; }
    Opened open(const Volume& volume, Access /*access*/) override {
        return {
            Opened::Outcome::Done, std::make_unique<HeldImage>(volume, image_.get(), offset_, record_), {}};
    }
    bool unmount(const Mount& /*mount*/) override { return false; }
    std::uint32_t randomNumber() override { return serial_; }
    std::tm localTime() override {
        std::tm time = {};
        time.tm_year = 126;
        time.tm_mday = 2;
        time.tm_hour = 3;
        return time;
    }
    void print(const std::string& text) override { std::cout << text << std::flush; }
    std::optional<std::string> readLine() override { return "y"; }

private:
    UniqueFd image_;
    std::uint64_t offset_;
    std::uint32_t serial_;
    Record record_;
    Volume volume_;
};

} // namespace

int main(int count, char** words) {
    if (count < 2) return static_cast<int>(Status::Usage);
    // Memory that is given back to the system after each piece is cleared anew by it.
    mallopt(M_MMAP_THRESHOLD, ownMemory);
    mallopt(M_TRIM_THRESHOLD, ownMemory);
    const Wish wish(count, words);
    ImageSystem system(words[1], wish);
    const Options options{'E', static_cast<unsigned>(wish.number("cluster", 64)), false};
    return static_cast<int>(format(system, options));
}
