#include "platform/files.h"

#include "platform/linux/base/descriptor_io.h"
#include "platform/linux/base/file_error.h"
#include "platform/linux/files/file_io.h"
#include "platform/linux/files/path.h"

#include <cerrno>
#include <fcntl.h>
#include <vector>

namespace platform {

using namespace linux;

namespace {

constexpr std::size_t blockSize = 256UL * 1024;

/// A name that is a folder, a plain file, and nothing else: what is neither does not exist for the program.
bool exists(std::string_view path, Place& place) {
    return locate(path, place) == FileResult::Ok && (place.isFolder() || place.isFile());
}

/// Empties a file that is open, hands it to `fill`, and brings it onto its medium, with its name when that is
/// new.
template <class Fill>
FileResult fillFile(const Place& place, UniqueFd& file, Fill fill) {
    if (place.info && place.info->st_size != 0 && ftruncate(file.get(), 0) != 0) return fileResult(errno);
    FileResult result = fill(file.get());
    if (result != FileResult::Ok) return result; // what was written stays
    result = syncAndClose(file);
    return result == FileResult::Ok && !place.info ? syncFolder(place.folder.get()) : result;
}

FileResult copyBytes(int from, int to) {
    std::vector<char> block(blockSize);
    for (;;) {
        std::size_t count = 0;
        FileResult result = readSome(from, block.data(), block.size(), count);
        if (result != FileResult::Ok || count == 0) return result;
        result = writeAll(to, {block.data(), count});
        if (result != FileResult::Ok) return result;
    }
}

bool isSameFile(const Place& a, const Place& b) {
    return b.info && a.info->st_dev == b.info->st_dev && a.info->st_ino == b.info->st_ino;
}

} // namespace

std::optional<std::uint32_t> fileAttributes(std::string_view path) {
    Place place;
    if (!exists(path, place)) return std::nullopt;
    return attributesOf(place);
}

std::optional<std::uint64_t> fileLength(std::string_view path) {
    Place place;
    if (!exists(path, place) || place.isFolder()) return std::nullopt;
    return static_cast<std::uint64_t>(place.info->st_size);
}

FileResult readWholeFile(std::string_view path, std::string& contents) {
    contents.clear();
    Place place;
    UniqueFd file;
    FileResult result = locate(path, place);
    if (result == FileResult::Ok) result = openToRead(place, file);
    if (result != FileResult::Ok) return result;

    contents.reserve(static_cast<std::size_t>(place.info->st_size)); // growing would take longer than reading
    result = readAll(file.get(), contents);
    if (result != FileResult::Ok) contents.clear();
    return result;
}

FileResult writeWholeFile(std::string_view path, std::string_view contents, const DriveIdentity& drive) {
    Place place;
    UniqueFd file;
    FileResult result = locate(path, place, drive);
    if (result == FileResult::Ok) result = openToWrite(place, file);
    if (result != FileResult::Ok) return result;
    return fillFile(place, file, [contents](int target) { return writeAll(target, contents); });
}

FileResult copyFile(std::string_view source, std::string_view target, const DriveIdentity& drive) {
    Place from;
    Place to;
    UniqueFd input;
    UniqueFd output;
    FileResult result = locate(source, from);
    if (result == FileResult::Ok) result = openToRead(from, input);
    if (result == FileResult::Ok) result = locate(target, to, drive);
    if (result == FileResult::Ok && isSameFile(from, to)) result = FileResult::PermissionDenied;
    if (result == FileResult::Ok) clearAttributes(to);
    if (result == FileResult::Ok) result = openToWrite(to, output);
    if (result != FileResult::Ok) return result;
    return fillFile(to, output, [&from, &input](int file) {
        const FileResult copied = copyBytes(input.get(), file);
        return copied == FileResult::Ok ? copyAttributes(input.get(), from, file) : copied;
    });
}

FileResult deleteFile(std::string_view path) {
    Place place;
    const FileResult result = locate(path, place);
    if (result != FileResult::Ok) return result;
    if (place.isFolder()) return FileResult::PathFileAccess;
    if (!place.info) return FileResult::FileNotFound;
    if (!place.isFile()) return place.asksForFolder ? FileResult::PathNotFound : FileResult::PathFileAccess;
    if ((attributesOf(place) & FileReadOnly) != 0) return FileResult::PermissionDenied;
    if (unlinkat(place.folder.get(), place.name.c_str(), 0) != 0) return fileResult(errno);
    return syncFolder(place.folder.get());
}

} // namespace platform
