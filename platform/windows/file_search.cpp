#include "platform/files.h"

#include "platform/windows/ansi_text.h"
#include "platform/windows/file_name.h"
#include "platform/windows/path.h"
#include "platform/windows/quiet_errors.h"

#include <windows.h>

#include <array>

namespace platform {

using namespace windows;

namespace {

/// The folder's path when a path asks for all of a folder; its separator stays, so that a file does not pass.
std::optional<std::string_view> folderOfPattern(std::string_view path) {
    static constexpr std::array<std::string_view, 4> patterns = {"\\*.*", "/*.*", "\\*", "/*"};
    for (const auto pattern : patterns) {
        if (path.size() >= pattern.size() && path.substr(path.size() - pattern.size()) == pattern)
            return path.substr(0, path.size() - pattern.size() + 1);
    }
    return std::nullopt;
}

bool isDots(std::string_view name) {
    return name == "." || name == "..";
}

} // namespace

struct FileSearch::State {
    HANDLE search = INVALID_HANDLE_VALUE;
    WIN32_FIND_DATAA entry{};
    bool hasEntry = false;
    bool isOnDrive = false;

    State() = default;
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ~State() {
        if (search != INVALID_HANDLE_VALUE) FindClose(search);
    }

    void start(const std::string& pattern, bool onDrive) {
        isOnDrive = onDrive;
        search = FindFirstFileA(pattern.c_str(), &entry);
        hasEntry = search != INVALID_HANDLE_VALUE;
    }

    /// False for what a path could not name, and for a link on a drive, which is no file at all.
    bool describe(FoundFile& found) const {
        const std::string name = utf8FromAnsi(entry.cFileName);
        const bool link = (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
        if (!isDots(name) && (usableName(name) != std::string(entry.cFileName) || (link && isOnDrive)))
            return false;
        found = {name, entry.dwFileAttributes};
        return true;
    }
};

FileSearch::FileSearch(std::string_view path) : state_(std::make_unique<State>()) {
    const QuietErrors quiet;
    const auto folder = folderOfPattern(path);
    Place place;
    if (locate(folder.value_or(path), place) != FileResult::Ok) return;
    if (!folder) {
        const bool named = !place.isRoot && !place.asksForFolder && place.exists();
        if (named) state_->start(place.native, place.isOnDrive);
    } else if (place.isFolder()) {
        const std::string_view separator = place.native.back() == '\\' ? "" : "\\";
        state_->start(std::string(place.native).append(separator).append("*.*"), place.isOnDrive);
    }
}

FileSearch::~FileSearch() = default;

bool FileSearch::next(FoundFile& found) {
    const QuietErrors quiet;
    while (state_->hasEntry) {
        const bool usable = state_->describe(found);
        state_->hasEntry = FindNextFileA(state_->search, &state_->entry) != FALSE;
        if (usable) return true;
    }
    return false;
}

} // namespace platform
