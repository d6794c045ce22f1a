#include "platform/files.h"

#include "platform/windows/file_error.h"
#include "platform/windows/path.h"
#include "platform/windows/quiet_errors.h"
#include "platform/windows/unique_handle.h"

#include <algorithm>
#include <vector>

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

FileResult readAll(HANDLE file, std::string& contents) {
    std::vector<char> block(blockSize);
    for (;;) {
        DWORD count = 0;
        if (ReadFile(file, block.data(), blockSize, &count, nullptr) == FALSE) return lastResult();
        if (count == 0) return FileResult::Ok;
        contents.append(block.data(), count);
    }
}

FileResult writeAll(HANDLE file, std::string_view bytes) {
    while (!bytes.empty()) {
        const auto size = static_cast<DWORD>(std::min<std::size_t>(bytes.size(), blockSize));
        DWORD written = 0;
        if (WriteFile(file, bytes.data(), size, &written, nullptr) == FALSE) return lastResult();
        if (written == 0) return FileResult::DiskFull;
        bytes.remove_prefix(written);
    }
    return FileResult::Ok;
}

FileResult flushAndClose(UniqueHandle& file) {
    if (FlushFileBuffers(file.get()) == FALSE) return lastResult();
    return file.close() ? FileResult::Ok : lastResult();
}

FileResult copyBytes(HANDLE from, HANDLE to) {
    std::vector<char> block(blockSize);
    for (;;) {
        DWORD count = 0;
        if (ReadFile(from, block.data(), blockSize, &count, nullptr) == FALSE) return lastResult();
        if (count == 0) return FileResult::Ok;
        const FileResult result = writeAll(to, {block.data(), count});
        if (result != FileResult::Ok) return result;
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

/// A copy is as old as its source. A file system without such attributes is no failure.
void copyAttributes(HANDLE from, HANDLE to) {
    FILE_BASIC_INFO source{};
    if (GetFileInformationByHandleEx(from, FileBasicInfo, &source, sizeof source) == FALSE) return;
    constexpr DWORD kept = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE;
    FILE_BASIC_INFO info{};
    info.LastWriteTime = source.LastWriteTime;
    info.FileAttributes = (source.FileAttributes & kept) | FILE_ATTRIBUTE_ARCHIVE;
    SetFileInformationByHandle(to, FileBasicInfo, &info, sizeof info);
}

/// Creates or empties the file, hands it to `fill`, and brings it onto its medium. What was written before a
/// failure stays.
template <class Fill>
FileResult fillFile(const Place& place, Fill fill) {
    UniqueHandle file = openFile(place, GENERIC_WRITE, FILE_SHARE_READ, OPEN_ALWAYS);
    if (!file) return creationResult();
    if (SetEndOfFile(file.get()) == FALSE) return lastResult();
    const FileResult result = fill(file.get());
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
    const UniqueHandle file(
        CreateFileA(place.native.c_str(), GENERIC_READ, shareAll, nullptr, OPEN_EXISTING, 0, nullptr));
    if (!file) return lastResult();
    result = readAll(file.get(), contents);
    if (result != FileResult::Ok) contents.clear();
    return result;
}

FileResult writeWholeFile(std::string_view path, std::string_view contents, const DriveIdentity& drive) {
    const QuietErrors quiet;
    Place place;
    const FileResult result = locateFile(path, place, drive);
    if (result != FileResult::Ok) return result;
    if (place.isReadOnly()) return FileResult::PermissionDenied;
    return fillFile(place, [contents](HANDLE file) { return writeAll(file, contents); });
}

/// Not `CopyFileA`, which knows the target by its letter alone.
FileResult copyFile(std::string_view source, std::string_view target, const DriveIdentity& drive) {
    const QuietErrors quiet;
    Place from;
    Place to;
    FileResult result = locateExistingFile(source, from);
    if (result == FileResult::Ok) result = locateFile(target, to, drive);
    if (result != FileResult::Ok) return result;
    if (isSameFile(from, to)) return FileResult::PermissionDenied;
    const UniqueHandle input = openFile(from, GENERIC_READ, shareAll, OPEN_EXISTING);
    if (!input) return lastResult();
    clearAttributes(to);
    return fillFile(to, [&input](HANDLE file) {
        const FileResult copied = copyBytes(input.get(), file);
        if (copied == FileResult::Ok) copyAttributes(input.get(), file);
        return copied;
    });
}

FileResult deleteFile(std::string_view path) {
    const QuietErrors quiet;
    Place place;
    const FileResult result = locateExistingFile(path, place);
    if (result != FileResult::Ok) return result;
    return DeleteFileA(place.native.c_str()) != FALSE ? FileResult::Ok : lastResult();
}

} // namespace platform
