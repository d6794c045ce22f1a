#include "platform/files.h"

#include "platform/linux/base/folder_reader.h"
#include "platform/linux/files/file_io.h"
#include "platform/linux/files/file_name.h"
#include "platform/linux/files/path.h"

#include <array>
#include <fcntl.h>
#include <span>

namespace platform {

using namespace linux;

namespace {

/// The folder's path when a path asks for all of a folder; its separator stays, so that a file does not pass.
std::optional<std::string_view> folderOfPattern(std::string_view path) {
    static constexpr std::array<std::string_view, 4> patterns = {"\\*.*", "/*.*", "\\*", "/*"};
    for (const auto pattern : patterns) {
        if (path.size() >= pattern.size() && path.substr(path.size() - pattern.size()) == pattern) {
            return path.substr(0, path.size() - pattern.size() + 1);
        }
    }
    return std::nullopt;
}

constexpr std::array<std::string_view, 2> dotNames = {".", ".."};

} // namespace

struct FileSearch::State {
    Place place;
    UniqueFd opened;
    Folder folder; ///< the same, asked once for what it is
    FolderReader reader;
    bool ofFolder = false;
    bool atEnd = true;
    std::span<const std::string_view> dots; ///< still to be reported; they come first, as on Windows

    void startFolder(std::string_view path) {
        if (locate(path, place) != FileResult::Ok || !place.isFolder()) return;
        const int links = place.followsLinks ? 0 : O_NOFOLLOW;
        opened = UniqueFd(
            openat(place.folder.get(), place.name.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC | links));
        if (opened) {
            folder = Folder(opened.get());
            reader = FolderReader(folder.file);
        }
        ofFolder = true;
        atEnd = !reader.readable();
        const bool isDriveRoot = place.isRoot && !place.followsLinks;
        if (!isDriveRoot) dots = dotNames;
    }

    void startOne(std::string_view path) {
        if (locate(path, place) != FileResult::Ok || place.isRoot || place.asksForFolder) return;
        atEnd = !place.isFile() && !place.isFolder();
    }

    bool one(FoundFile& found) {
        atEnd = true;
        found = {place.name, attributesOf(place)};
        return true;
    }

    /// False for what a path could not name, or what is neither file nor folder, and so is not there for the
    /// program.
    bool describe(const char* name, FoundFile& found) const {
        if (usableName(name) != std::string_view(name)) return false;
        struct stat info {};
        if (fstatat(folder.file, name, &info, place.followsLinks ? 0 : AT_SYMLINK_NOFOLLOW) != 0)
            return false;
        if (!S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode)) return false;
        found = {name, attributesOf(folder, name, info)};
        return true;
    }

    bool nextOfFolder(FoundFile& found) {
        if (!dots.empty()) {
            found = {std::string(dots.front()), FileDirectory};
            dots = dots.subspan(1);
            return true;
        }
        while (const char* name = reader.next()) {
            if (describe(name, found)) return true;
        }
        atEnd = true;
        return false;
    }
};

FileSearch::FileSearch(std::string_view path) : state_(std::make_unique<State>()) {
    if (const auto folder = folderOfPattern(path)) {
        state_->startFolder(*folder);
    } else {
        state_->startOne(path);
    }
}

FileSearch::~FileSearch() = default;

bool FileSearch::next(FoundFile& found) {
    if (state_->atEnd) return false;
    return state_->ofFolder ? state_->nextOfFolder(found) : state_->one(found);
}

} // namespace platform
