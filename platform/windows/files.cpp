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

/// As documented of the copying function, a hidden file is not written over either.
constexpr DWORD refusesCopies = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN;

FileResult locateFile(std::string_view path, Place& place) {
    const FileResult result = locate(path, place);
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

/// Brings a copy onto its medium, its attributes included. A read-only one gives its attribute up until it is
/// open.
FileResult flushCopy(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return lastResult();
    const bool readOnly = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    if (readOnly) SetFileAttributesA(path.c_str(), attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY));
    UniqueHandle file(CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, shareAll, nullptr,
                                  OPEN_EXISTING, 0, nullptr));
    const FileResult opened = file ? FileResult::Ok : lastResult();
    if (readOnly) SetFileAttributesA(path.c_str(), attributes);
    return opened == FileResult::Ok ? flushAndClose(file) : opened;
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

bool mayCopyOver(const Place& source, const Place& target) {
    if (!target.exists()) return true;
    return (target.attributes & refusesCopies) == 0 && !isSameFile(source, target);
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

FileResult writeWholeFile(std::string_view path, std::string_view contents) {
    const QuietErrors quiet;
    Place place;
    FileResult result = locateFile(path, place);
    if (result != FileResult::Ok) return result;
    if (place.isReadOnly()) return FileResult::PermissionDenied;
    // Not CREATE_ALWAYS, which refuses a hidden file.
    UniqueHandle file(CreateFileA(place.native.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_ALWAYS,
                                  FILE_ATTRIBUTE_ARCHIVE, nullptr));
    if (!file) return creationResult();
    if (SetEndOfFile(file.get()) == FALSE) return lastResult();
    result = writeAll(file.get(), contents);
    return result == FileResult::Ok ? flushAndClose(file) : result; // what was written stays
}

FileResult copyFile(std::string_view source, std::string_view target) {
    const QuietErrors quiet;
    Place from;
    Place to;
    FileResult result = locateExistingFile(source, from);
    if (result == FileResult::Ok) result = locateFile(target, to);
    if (result != FileResult::Ok) return result;
    if (!mayCopyOver(from, to)) return FileResult::PermissionDenied;
    if (CopyFileA(from.native.c_str(), to.native.c_str(), FALSE) == FALSE) return creationResult();
    return flushCopy(to.native);
}

FileResult deleteFile(std::string_view path) {
    const QuietErrors quiet;
    Place place;
    const FileResult result = locateExistingFile(path, place);
    if (result != FileResult::Ok) return result;
    return DeleteFileA(place.native.c_str()) != FALSE ? FileResult::Ok : lastResult();
}

} // namespace platform
