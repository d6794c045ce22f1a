#include "platform/linux/files/path.h"

#include "base/letters.h"
#include "build_choices.h"
#include "platform/linux/base/file_error.h"
#include "platform/linux/base/folder_reader.h"
#include "platform/linux/drives/drive_source.h"
#include "platform/linux/drives/drive_table.h"
#include "platform/linux/files/file_name.h"
#include "platform/linux/files/own_folders.h"
#include "platform/program_folder.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <vector>

namespace platform::linux {

namespace {

constexpr std::string_view separators = "\\/";

bool isSeparator(char c) {
    return separators.find(c) != std::string_view::npos;
}

/// A path taken apart, before anything is looked up.
struct Route {
    char drive = 0;     ///< letter, or 0 for one of the program's own folders
    std::string folder; ///< that folder, without a slash at the end
    std::vector<std::string_view> names;
    bool asksForFolder = false;
};

/// Takes the names of `rest` apart; false when one of them is none.
bool splitNames(std::string_view rest, Route& route) {
    route.asksForFolder = !rest.empty() && isSeparator(rest.back());
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find_first_of(separators), rest.size());
        const std::string_view name = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (name.empty() || name == ".") continue;
        if (name == "..") {
            if (!route.names.empty()) route.names.pop_back();
            continue;
        }
        const auto usable = usableName(name);
        if (!usable) return false;
        route.names.push_back(*usable);
    }
    return true;
}

/// The longer of the program's own folders that the path begins with, without a slash at its end; no value
/// for none.
std::optional<std::string> ownFolderOf(std::string_view path) {
    std::optional<std::string> found;
    for (std::string folder : {programFolder(), userConfigFolder(), std::string(base::handbookFolder)}) {
        if (folder.empty()) continue;
        if (folder.back() == '/') folder.pop_back();
        const bool begins =
            path.substr(0, folder.size()) == folder &&
            (path.size() == folder.size() ? !folder.empty() : isSeparator(path[folder.size()]));
        if (begins && (!found || folder.size() > found->size())) found = std::move(folder);
    }
    return found;
}

bool splitPath(std::string_view path, Route& route) {
    if (path.size() >= 2 && base::isLetter(path[0]) && path[1] == ':') {
        if (path.size() > 2 && !isSeparator(path[2])) return false;
        route.drive = path[0];
        return splitNames(path.substr(2), route);
    }
    auto folder = ownFolderOf(path);
    if (!folder) return false;
    route.folder = std::move(*folder);
    return splitNames(path.substr(route.folder.size()), route);
}

/// The folder is open, so it is this very one that is written, whatever gets its letter or its path from here
/// on.
bool isOnDrive(const Place& place, char letter, const DriveIdentity& drive) {
    struct stat folder {};
    if (letter == 0 || fstat(place.folder.get(), &folder) != 0) return false;
    return driveIdentity(std::string{letter, ':', '\\'}) == drive && driveSource().isRoot(letter, folder);
}

FileResult openRoot(const Route& route, Place& place) {
    place.followsLinks = route.drive == 0;
    place.asksForFolder = route.asksForFolder;
    place.folderPath = route.folder;
    if (route.drive != 0) {
        const auto folder = driveFolder(route.drive);
        if (!folder) return FileResult::DiskNotReady;
        place.folderPath = *folder;
    }
    if (place.folderPath.empty() || place.folderPath.back() != '/') place.folderPath += '/';
    place.folder = UniqueFd(open(place.folderPath.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (place.folder) return FileResult::Ok;
    if (errno == EACCES) return FileResult::PermissionDenied;
    return route.drive != 0 ? FileResult::DiskNotReady : FileResult::PathNotFound;
}

/// The name in a folder that differs from the given one in case at most; the first by its bytes when there
/// are several.
std::optional<std::string> findSameName(int folder, std::string_view name) {
    std::optional<std::string> found;
    FolderReader reader(folder);
    while (const char* entry = reader.next()) {
        if (sameName(entry, name) && (!found || entry < *found)) found = entry;
    }
    return found;
}

/// Looks place.name up; stores how the folder spells it, and its facts when it exists. Returns 0 or an error
/// number.
int lookUp(Place& place) {
    const int flags = place.followsLinks ? 0 : AT_SYMLINK_NOFOLLOW;
    struct stat info {};
    if (fstatat(place.folder.get(), place.name.c_str(), &info, flags) != 0) {
        if (errno != ENOENT) return errno;
        auto spelled = findSameName(place.folder.get(), place.name);
        if (!spelled) return ENOENT;
        place.name = std::move(*spelled);
        if (fstatat(place.folder.get(), place.name.c_str(), &info, flags) != 0) return errno;
    }
    if (S_ISLNK(info.st_mode)) return ELOOP;
    place.info = info;
    return 0;
}

/// Goes into the folder that place.name names.
FileResult enter(Place& place) {
    const int error = lookUp(place);
    if (error != 0) return error == ENOENT ? FileResult::PathNotFound : fileResult(error);
    if (!place.isFolder()) return FileResult::PathNotFound;
    const int links = place.followsLinks ? 0 : O_NOFOLLOW;
    UniqueFd next(openat(place.folder.get(), place.name.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC | links));
    if (!next) return errno == ENOENT ? FileResult::PathNotFound : fileResult(errno);
    place.folder = std::move(next);
    place.folderPath += place.name + '/';
    place.info.reset();
    return FileResult::Ok;
}

FileResult lookUpLast(Place& place) {
    const int error = lookUp(place);
    return error == ENOENT ? FileResult::Ok : fileResult(error);
}

} // namespace

FileResult locate(std::string_view path, Place& place, const DriveIdentity& drive) {
    place = {};
    Route route;
    if (!splitPath(path, route)) return FileResult::PathNotFound;
    FileResult result = openRoot(route, place);
    if (result != FileResult::Ok) return result;
    if (drive && !isOnDrive(place, route.drive, drive)) return FileResult::DiskNotReady;
    place.isRoot = route.names.empty();
    if (place.isRoot) place.name = ".";
    for (std::size_t i = 0; i < route.names.size(); ++i) {
        place.name = route.names[i];
        if (i + 1 == route.names.size()) break;
        result = enter(place);
        if (result != FileResult::Ok) return result;
    }
    return lookUpLast(place);
}

std::optional<std::string> nativePath(std::string_view path) {
    Place place;
    if (locate(path, place) != FileResult::Ok || !place.info) return std::nullopt;
    if (place.asksForFolder && !place.isFolder()) return std::nullopt;
    return place.isRoot ? place.folderPath : place.folderPath + place.name;
}

} // namespace platform::linux
