#include "platform/linux/base/descriptor_io.h"

#include "platform/linux/base/file_error.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace platform::linux {

namespace {

/// What is read at once. Most files are settings of a few lines, and each is read before the window is shown.
constexpr std::size_t blockSize = 16UL * 1024;

} // namespace

FileResult readSome(int file, char* buffer, std::size_t size, std::size_t& count) {
    count = 0;
    ssize_t got = 0;
    do {
        got = read(file, buffer, size);
    } while (got < 0 && errno == EINTR);
    if (got < 0) return fileResult(errno);
    count = static_cast<std::size_t>(got);
    return FileResult::Ok;
}

FileResult readAll(int file, std::string& bytes, std::size_t most) {
    std::array<char, blockSize> block;
    for (std::size_t count = 1; count > 0 && bytes.size() < most;) {
        const FileResult result = readSome(file, block.data(), block.size(), count);
        if (result != FileResult::Ok) return result;
        bytes.append(block.data(), count);
    }
    return FileResult::Ok;
}

FileResult writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(file, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return fileResult(errno);
        if (written == 0) return FileResult::DeviceIo;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return FileResult::Ok;
}

FileResult syncFile(int file) {
    int error = 0;
    while ((error = fsync(file) == 0 ? 0 : errno) == EINTR) {
    }
    return fileResult(error);
}

FileResult syncAndClose(UniqueFd& file) {
    const FileResult result = syncFile(file.get());
    const int closeError = file.close();
    return result != FileResult::Ok ? result : fileResult(closeError);
}

FileResult syncFolder(int folder) {
    UniqueFd readable(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!readable) return fileResult(errno); // also when it may be written, only not read
    const FileResult result = syncAndClose(readable);
    // Network file systems refuse to sync a folder (EINVAL); their server does it.
    return result == FileResult::PathNotFound ? FileResult::Ok : result;
}

} // namespace platform::linux
