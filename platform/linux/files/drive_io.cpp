#include "platform/linux/files/drive_io.h"

#include "platform/blocking.h"
#include "platform/linux/base/descriptor_io.h"
#include "platform/linux/base/file_error.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <memory>
#include <utility>

namespace platform::linux {

namespace {

using Clock = std::chrono::steady_clock;

/// How much is read or written at once: a tenth of a second or two on a slow stick, and on a fast disk so
/// much that handing a block over to another thread takes little of the time.
class BlockSize {
public:
    static constexpr std::size_t largest = 512UL * 1024;

    std::size_t bytes() const { return bytes_; }

    void took(Clock::duration time) {
        constexpr auto littleTime = std::chrono::milliseconds(10);
        bytes_ = time < littleTime ? std::min(2 * bytes_, largest) : smallest;
    }

private:
    static constexpr std::size_t smallest = 256UL * 1024;
    std::size_t bytes_ = smallest;
};

/// The open file under a number of the call's own.
using Shared = std::shared_ptr<UniqueFd>;

Shared shared(int file) {
    return std::make_shared<UniqueFd>(fcntl(file, F_DUPFD_CLOEXEC, 0));
}

/// A file that is read or written block by block. Whoever gives up waiting for a block leaves the call its
/// share of this.
struct Transfer {
    explicit Transfer(int number) : file(fcntl(number, F_DUPFD_CLOEXEC, 0)) {
        room.reserve(BlockSize::largest); // only what is used of it takes memory
    }

    UniqueFd file;
    std::string room; ///< of one block; what is behind that means nothing
};

/// How much of a file may be on its way to the medium, which writes that in any case, also when the program
/// ends meanwhile. A medium whose speed is not known yet, or is low, gets one block after the other.
class UnderWay {
public:
    off_t blocks() const { return blocks_; }

    void took(Clock::duration time) {
        constexpr auto shortTime = std::chrono::milliseconds(100);
        blocks_ = time < shortTime ? 4 : 0;
    }

private:
    off_t blocks_ = 0;
};

/// Has a part of a file sent to its medium, and waits for what has to be there, from the beginning on. That
/// it has arrived is for the sync to tell. https://man7.org/linux/man-pages/man2/sync_file_range.2.html
void send(int file, off_t begin, off_t length, off_t arrived) {
    (void)sync_file_range(file, begin, length, SYNC_FILE_RANGE_WRITE);
    if (arrived <= 0) return;
    constexpr unsigned wait =
        SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER;
    (void)sync_file_range(file, 0, arrived, wait);
}

FileResult writeBlock(const Transfer& to, off_t offset, off_t arrived) {
    const FileResult result = writeAll(to.file.get(), to.room);
    if (result == FileResult::Ok) send(to.file.get(), offset, static_cast<off_t>(to.room.size()), arrived);
    return result;
}

/// What has not reached the medium yet would not leave the memory.
/// https://man7.org/linux/man-pages/man2/posix_fadvise.2.html
FileResult forget(int file) {
    const FileResult result = syncFile(file);
    if (result == FileResult::Ok) (void)posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED);
    return result;
}

/// Reads up to the end of the file, or until `take` refuses a block; the last block is empty.
template <class Take>
FileResult readBlocks(const std::shared_ptr<Transfer>& from, Take take) {
    struct Read {
        FileResult result = FileResult::Ok;
        std::size_t count = 0;
    };
    BlockSize size;
    for (;;) {
        const auto begun = Clock::now();
        from->room.resize(size.bytes());
        const Read got = blocking([from] {
            Read read;
            read.result = readSome(from->file.get(), from->room.data(), from->room.size(), read.count);
            return read;
        });
        if (got.result != FileResult::Ok) return got.result;
        const FileResult taken = take(std::string_view(from->room).substr(0, got.count));
        if (taken != FileResult::Ok || got.count == 0) return taken;
        size.took(Clock::now() - begun);
    }
}

} // namespace

FileResult readFromDrive(int file, std::string& bytes) {
    return readBlocks(std::make_shared<Transfer>(file), [&bytes](std::string_view block) {
        bytes += block;
        return FileResult::Ok;
    });
}

FileResult compareOnDrive(int file, std::string_view bytes) {
    const auto from = std::make_shared<Transfer>(file);
    const FileResult forgotten = blocking([from] { return forget(from->file.get()); });
    if (forgotten != FileResult::Ok) return forgotten;
    return readBlocks(from, [&bytes](std::string_view block) {
        const bool atEnd = block.empty();
        if (atEnd ? !bytes.empty() : !bytes.starts_with(block)) return FileResult::DeviceIo;
        bytes.remove_prefix(block.size());
        return FileResult::Ok;
    });
}

FileResult writeToDrive(int file, std::string_view bytes) {
    const auto to = std::make_shared<Transfer>(file);
    off_t offset = lseek(file, 0, SEEK_CUR);
    off_t arrived = offset;
    BlockSize size;
    UnderWay underWay;
    while (!bytes.empty()) {
        const auto begun = Clock::now();
        to->room = bytes.substr(0, size.bytes());
        const auto length = static_cast<off_t>(to->room.size());
        const off_t due = std::max(arrived, offset + length - underWay.blocks() * length);
        const FileResult result = blocking([to, offset, due] { return writeBlock(*to, offset, due); });
        if (result != FileResult::Ok) return result;
        offset += length;
        bytes.remove_prefix(to->room.size());
        if (std::exchange(arrived, due) == due) continue; // it tells of the memory and not of the disk
        size.took(Clock::now() - begun);
        underWay.took(Clock::now() - begun);
    }
    return FileResult::Ok;
}

FileResult emptyOnDrive(int file) {
    return blocking([own = shared(file)] { return fileResult(ftruncate(own->get(), 0) == 0 ? 0 : errno); });
}

FileResult syncOnDrive(int file) {
    return blocking([own = shared(file)] { return syncFile(own->get()); });
}

FileResult syncAndCloseOnDrive(UniqueFd& file) {
    return blocking([own = std::move(file)]() mutable { return syncAndClose(own); });
}

FileResult syncFolderOnDrive(int folder) {
    return blocking([own = shared(folder)] { return syncFolder(own->get()); });
}

} // namespace platform::linux
