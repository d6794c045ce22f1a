#include "platform/files.h"

#include "platform/linux/base/file_error.h"
#include "platform/linux/files/drive_io.h"
#include "platform/linux/files/file_io.h"
#include "platform/linux/files/path.h"

#include <cerrno>
#include <fcntl.h>

namespace platform {

using namespace linux;

namespace {

/// A name that is a folder, a plain file, and nothing else: what is neither does not exist for the program.
bool exists(std::string_view path, Place& place) {
    return locate(path, place) == FileResult::Ok && (place.isFolder() || place.isFile());
}

/// Empties a file that is open, hands it to `fill`, and brings it onto its medium, with its name when that is
/// new.
template <class Fill>
FileResult fillFile(const Place& place, UniqueFd& file, Fill fill) {
    FileResult result = FileResult::Ok;
    if (place.info && place.info->st_size != 0) result = emptyOnDrive(file.get());
    if (result == FileResult::Ok) result = fill(file.get());
    if (result != FileResult::Ok) return result; // what was written stays
    result = syncAndCloseOnDrive(file);
    return result == FileResult::Ok && !place.info ? syncFolderOnDrive(place.folder.get()) : result;
}

bool isSameFile(const Place& a, const Place& b) {
    return b.info && a.info->st_dev == b.info->st_dev && a.info->st_ino == b.info->st_ino;
}

/// Whether a file is already what a copy of the source, which has these contents, would be.
bool isCopy(const Place& place, std::string_view contents, const Place& source, const UniqueFd& input) {
    UniqueFd file;
    return place.isFile() && static_cast<std::size_t>(place.info->st_size) == contents.size() &&
           openToRead(place, file) == FileResult::Ok &&
           hasCopiedAttributes(file.get(), input.get(), source) &&
           compareOnDrive(file.get(), contents) == FileResult::Ok;
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
    result = readFromDrive(file.get(), contents);
    if (result != FileResult::Ok) contents.clear();
    return result;
}

FileResult writeWholeFile(std::string_view path, std::string_view contents, const DriveIdentity& drive) {
    Place place;
    UniqueFd file;
    FileResult result = locate(path, place, drive);
    if (result == FileResult::Ok) result = openToWrite(place, file);
    if (result != FileResult::Ok) return result;
    return fillFile(place, file, [contents](int target) { return writeToDrive(target, contents); });
}

FileResult copyFile(std::string_view source, std::string_view target, const DriveIdentity& drive,
                    bool* untouched) {
    Place from;
    Place to;
    UniqueFd input;
    UniqueFd output;
    FileResult result = locate(source, from);
    if (result == FileResult::Ok) result = openToRead(from, input);
    if (result == FileResult::Ok) result = locate(target, to, drive);
    if (result == FileResult::Ok && isSameFile(from, to)) result = FileResult::PermissionDenied;
    std::string contents;
    if (result == FileResult::Ok) result = readFromDrive(input.get(), contents);
    if (result != FileResult::Ok) return result;
    if (untouched != nullptr && isCopy(to, contents, from, input)) {
        *untouched = true;
        return result;
    }
    clearAttributes(to);
    result = openToWrite(to, output);
    if (result != FileResult::Ok) return result;
    return fillFile(to, output, [&](int file) {
        const FileResult copied = writeToDrive(file, contents);
        return copied == FileResult::Ok ? copyAttributes(input.get(), from, file) : copied;
    });
}

FileResult compareFile(std::string_view path, std::string_view contents, const DriveIdentity& drive) {
    Place place;
    UniqueFd file;
    FileResult result = locate(path, place, drive);
    if (result == FileResult::Ok) result = openToRead(place, file);
    return result == FileResult::Ok ? compareOnDrive(file.get(), contents) : result;
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
    return syncFolderOnDrive(place.folder.get());
}

} // namespace platform
