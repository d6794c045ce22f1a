#include "platform/files.h"

#include "platform/blocking.h"
#include "platform/windows/file_error.h"
#include "platform/windows/path.h"
#include "platform/windows/quiet_errors.h"
#include "platform/windows/unique_handle.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>

namespace platform {

using namespace windows;

namespace {

constexpr DWORD blockSize = 256 * 1024;
constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

FileResult lastResult() {
    return fileResult(GetLastError());
}

FileResult locateFile(std::string_view path, Place& place, const DriveIdentity& drive = {}) {
    const FileResult result = locate(path, place, drive);
    return result == FileResult::Ok ? checkIsFile(place) : result;
}

FileResult locateExistingFile(std::string_view path, Place& place) {
    const FileResult result = locateFile(path, place);
    return result == FileResult::Ok && !place.exists() ? FileResult::FileNotFound : result;
}

/// A file that is to be created can only miss its folder.
FileResult creationResult() {
    const FileResult result = lastResult();
    return result == FileResult::FileNotFound ? FileResult::PathNotFound : result;
}

/// An open file; a call that nobody waits for any more keeps it open.
using File = std::shared_ptr<UniqueHandle>;

struct Block {
    FileResult result = FileResult::Ok;
    std::string bytes;
};

Block readBlock(HANDLE file) {
    const QuietErrors quiet;
    Block block;
    block.bytes.resize(blockSize);
    DWORD count = 0;
    if (ReadFile(file, block.bytes.data(), blockSize, &count, nullptr) == FALSE) block.result = lastResult();
    block.bytes.resize(count);
    return block;
}

FileResult writeBlock(HANDLE file, std::string_view bytes) {
    const QuietErrors quiet;
    while (!bytes.empty()) {
        DWORD written = 0;
        if (WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) == FALSE)
            return lastResult();
        if (written == 0) return FileResult::DiskFull;
        bytes.remove_prefix(written);
    }
    return FileResult::Ok;
}

FileResult readAll(const File& file, std::string& contents) {
    for (;;) {
        const Block block = blocking([file] { return readBlock(file->get()); });
        if (block.result != FileResult::Ok || block.bytes.empty()) return block.result;
        contents += block.bytes;
    }
}

FileResult writeAll(const File& file, std::string_view bytes) {
    for (; !bytes.empty(); bytes.remove_prefix(std::min<std::size_t>(bytes.size(), blockSize))) {
        const FileResult result = blocking([file, block = std::string(bytes.substr(0, blockSize))] {
            return writeBlock(file->get(), block);
        });
        if (result != FileResult::Ok) return result;
    }
    return FileResult::Ok;
}

FileResult flushAndClose(const File& file) {
    return blocking([file] {
        const QuietErrors quiet;
        if (FlushFileBuffers(file->get()) == FALSE) return lastResult();
        return file->close() ? FileResult::Ok : lastResult();
    });
}

/// Memory that begins where a page does, and so where the sectors of any disk may.
class Pages {
public:
    explicit Pages(std::size_t size) : memory_(VirtualAlloc(nullptr, size, MEM_COMMIT, PAGE_READWRITE)) {}
    Pages(const Pages&) = delete;
    Pages& operator=(const Pages&) = delete;
    ~Pages() { VirtualFree(memory_, 0, MEM_RELEASE); }

    char* data() const { return static_cast<char*>(memory_); }

private:
    void* memory_;
};

/// Of a file that was opened past the cache.
Block readUncachedBlock(HANDLE file) {
    const QuietErrors quiet;
    const Pages pages(blockSize);
    Block block;
    DWORD count = 0;
    const BOOL done = ReadFile(file, pages.data(), blockSize, &count, nullptr);
    if (done == FALSE && GetLastError() != ERROR_HANDLE_EOF) block.result = lastResult();
    block.bytes.assign(pages.data(), count);
    return block;
}

FileResult compareBytes(const File& file, std::string_view contents) {
    for (;;) {
        const Block block = blocking([file] { return readUncachedBlock(file->get()); });
        if (block.result != FileResult::Ok) return block.result;
        const std::size_t count = block.bytes.size();
        if (contents.substr(0, count) != block.bytes) return FileResult::DeviceIo;
        contents.remove_prefix(count);
        // Behind an end within a sector no further read is allowed.
        if (count < blockSize) return contents.empty() ? FileResult::Ok : FileResult::DeviceIo;
    }
}

/// A file that is hidden or read-only is one no longer. Whether that succeeded, opening it will tell.
void clearAttributes(const Place& place) {
    constexpr DWORD cleared = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
    if (!place.exists() || (place.attributes & cleared) == 0) return;
    const UniqueHandle file = openFile(place, FILE_WRITE_ATTRIBUTES, shareAll, OPEN_EXISTING);
    FILE_BASIC_INFO info{}; // a time of 0 stays as it is
    info.FileAttributes = FILE_ATTRIBUTE_ARCHIVE;
    if (file) SetFileInformationByHandle(file.get(), FileBasicInfo, &info, sizeof info);
}

/// What a copy has of its source: it is as old, and a time of 0 stays as it is. No value when that cannot be
/// told.
std::optional<FILE_BASIC_INFO> copiedInfo(HANDLE source) {
    FILE_BASIC_INFO info{};
    if (GetFileInformationByHandleEx(source, FileBasicInfo, &info, sizeof info) == FALSE) return std::nullopt;
    constexpr DWORD kept = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE;
    FILE_BASIC_INFO copied{};
    copied.LastWriteTime = info.LastWriteTime;
    copied.FileAttributes = (info.FileAttributes & kept) | FILE_ATTRIBUTE_ARCHIVE;
    return copied;
}

/// A file system without such attributes is no failure.
void copyAttributes(HANDLE from, HANDLE to) {
    if (auto info = copiedInfo(from)) SetFileInformationByHandle(to, FileBasicInfo, &*info, sizeof *info);
}

/// Whether a file is already what a copy of the source, which has these contents, would be; its age apart,
/// which not every file system keeps exactly.
bool isCopy(const Place& place, std::string_view contents, HANDLE source) {
    const auto info = copiedInfo(source);
    if (!place.isFile() || !info || place.attributes != info->FileAttributes) return false;
    const File file = std::make_shared<UniqueHandle>(openFileUncached(place));
    return *file && compareBytes(file, contents) == FileResult::Ok;
}

/// Creates or empties the file, hands it to `fill`, and brings it onto its medium. What was written before a
/// failure stays.
template <class Fill>
FileResult fillFile(const Place& place, Fill fill) {
    const File file =
        std::make_shared<UniqueHandle>(openFile(place, GENERIC_WRITE, FILE_SHARE_READ, OPEN_ALWAYS));
    if (!*file) return creationResult();
    if (SetEndOfFile(file->get()) == FALSE) return lastResult();
    const FileResult result = fill(file);
    return result == FileResult::Ok ? flushAndClose(file) : result;
}

/// What tells two names of one file.
bool isSameFile(const Place& a, const Place& b) {
    if (!b.exists()) return false;
    const auto identify = [](const Place& place, BY_HANDLE_FILE_INFORMATION& info) {
        const UniqueHandle file(CreateFileA(place.native.c_str(), FILE_READ_ATTRIBUTES, shareAll, nullptr,
                                            OPEN_EXISTING, 0, nullptr));
        return file && GetFileInformationByHandle(file.get(), &info) != FALSE;
    };
    BY_HANDLE_FILE_INFORMATION first{};
    BY_HANDLE_FILE_INFORMATION second{};
    return identify(a, first) && identify(b, second) &&
           first.dwVolumeSerialNumber == second.dwVolumeSerialNumber &&
           first.nFileIndexHigh == second.nFileIndexHigh && first.nFileIndexLow == second.nFileIndexLow &&
           first.nFileSizeLow == second.nFileSizeLow && first.nFileSizeHigh == second.nFileSizeHigh;
}

} // namespace

std::optional<std::uint32_t> fileAttributes(std::string_view path) {
    Place place;
    if (locate(path, place) != FileResult::Ok || (!place.isFolder() && !place.isFile())) return std::nullopt;
    return place.attributes;
}

std::optional<std::uint64_t> fileLength(std::string_view path) {
    const QuietErrors quiet;
    Place place;
    if (locateExistingFile(path, place) != FileResult::Ok) return std::nullopt;
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (GetFileAttributesExA(place.native.c_str(), GetFileExInfoStandard, &data) == FALSE)
        return std::nullopt;
    return (std::uint64_t{data.nFileSizeHigh} << 32U) | data.nFileSizeLow;
}

FileResult readWholeFile(std::string_view path, std::string& contents) {
    const QuietErrors quiet;
    contents.clear();
    Place place;
    FileResult result = locateExistingFile(path, place);
    if (result != FileResult::Ok) return result;
    const File file = std::make_shared<UniqueHandle>(
        CreateFileA(place.native.c_str(), GENERIC_READ, shareAll, nullptr, OPEN_EXISTING, 0, nullptr));
    if (!*file) return lastResult();
    result = readAll(file, contents);
    if (result != FileResult::Ok) contents.clear();
    return result;
}

FileResult writeWholeFile(std::string_view path, std::string_view contents, const DriveIdentity& drive) {
    const QuietErrors quiet;
    Place place;
    const FileResult result = locateFile(path, place, drive);
    if (result != FileResult::Ok) return result;
    if (place.isReadOnly()) return FileResult::PermissionDenied;
    return fillFile(place, [contents](const File& file) { return writeAll(file, contents); });
}

/// Not `CopyFileA`, which knows the target by its letter alone.
FileResult copyFile(std::string_view source, std::string_view target, const DriveIdentity& drive,
                    bool* untouched) {
    const QuietErrors quiet;
    Place from;
    Place to;
    FileResult result = locateExistingFile(source, from);
    if (result == FileResult::Ok) result = locateFile(target, to, drive);
    if (result != FileResult::Ok) return result;
    if (isSameFile(from, to)) return FileResult::PermissionDenied;
    const File input = std::make_shared<UniqueHandle>(openFile(from, GENERIC_READ, shareAll, OPEN_EXISTING));
    if (!*input) return lastResult();
    std::string contents;
    result = readAll(input, contents);
    if (result != FileResult::Ok) return result;
    if (untouched != nullptr && isCopy(to, contents, input->get())) {
        *untouched = true;
        return result;
    }
    clearAttributes(to);
    return fillFile(to, [&](const File& file) {
        const FileResult copied = writeAll(file, contents);
        if (copied == FileResult::Ok) copyAttributes(input->get(), file->get());
        return copied;
    });
}

FileResult compareFile(std::string_view path, std::string_view contents, const DriveIdentity& drive) {
    const QuietErrors quiet;
    Place place;
    FileResult result = locateFile(path, place, drive);
    if (result == FileResult::Ok && !place.exists()) result = FileResult::FileNotFound;
    if (result != FileResult::Ok) return result;
    const File file = std::make_shared<UniqueHandle>(openFileUncached(place));
    return *file ? compareBytes(file, contents) : lastResult();
}

FileResult deleteFile(std::string_view path) {
    const QuietErrors quiet;
    Place place;
    const FileResult result = locateExistingFile(path, place);
    if (result != FileResult::Ok) return result;
    return DeleteFileA(place.native.c_str()) != FALSE ? FileResult::Ok : lastResult();
}

} // namespace platform
