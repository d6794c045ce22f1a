#include "platform/linux/files/file_replace.h"

#include "platform/linux/base/descriptor_io.h"
#include "platform/linux/files/file_io.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <string>

namespace platform::linux {

namespace {

/// A new file in a folder, which goes again unless it has been given its final name.
class TemporaryFile {
public:
    TemporaryFile(int folder, mode_t mode) : folder_(folder) {
        static unsigned counter = 0;
        constexpr int attempts = 100;
        for (int i = 0; i < attempts && !file_; ++i) {
            name_ = "~profile-" + std::to_string(getpid()) + "-" + std::to_string(counter++) + ".tmp";
            constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
            file_ = UniqueFd(openat(folder_, name_.c_str(), flags, mode));
            if (!file_ && errno != EEXIST) break;
        }
        exists_ = static_cast<bool>(file_);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        if (exists_) unlinkat(folder_, name_.c_str(), 0);
    }

    UniqueFd& file() { return file_; }

    bool rename(const std::string& name) {
        if (renameat(folder_, name_.c_str(), folder_, name.c_str()) != 0) return false;
        exists_ = false;
        return true;
    }

private:
    int folder_;
    std::string name_;
    UniqueFd file_;
    bool exists_ = false;
};

/// Makes the new file what the old one was. Another user's file may become the writer's own: who may replace
/// a file in a folder may do so.
bool takeOver(const Place& place, int file) {
    UniqueFd old;
    if (openToRead(place, old) != FileResult::Ok) return false;
    const bool kept = fchown(file, place.info->st_uid, place.info->st_gid) == 0 ||
                      fchown(file, static_cast<uid_t>(-1), place.info->st_gid) == 0;
    static_cast<void>(kept);
    return copyAttributes(old.get(), place, file) == FileResult::Ok;
}

} // namespace

FileReplacement::FileReplacement(std::string_view path, const DriveIdentity& drive) {
    if (locate(path, place_, drive) != FileResult::Ok || place_.asksForFolder) return;
    if (!place_.info) {
        possible_ = true;
        return;
    }
    if (!place_.isFile() || (attributesOf(place_) & FileReadOnly) != 0 || !enterLinkedFolder()) return;
    possible_ = faccessat(place_.folder.get(), place_.name.c_str(), W_OK, AT_EACCESS) == 0;
}

/// In the program's own folders a file may be a link; what it leads to is replaced then, not the link.
bool FileReplacement::enterLinkedFolder() {
    struct stat info {};
    if (fstatat(place_.folder.get(), place_.name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) return false;
    if (!S_ISLNK(info.st_mode)) return true;
    std::error_code error;
    const auto file = std::filesystem::canonical(place_.folderPath + place_.name, error);
    if (error) return false;
    place_.folderPath = file.parent_path() / "";
    place_.name = file.filename();
    place_.folder = UniqueFd(open(place_.folderPath.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    return static_cast<bool>(place_.folder);
}

bool FileReplacement::replace(std::string_view contents) {
    constexpr mode_t forOwner = 0600;
    constexpr mode_t forEverybody = 0666;
    TemporaryFile temporary(place_.folder.get(), exists() ? forOwner : forEverybody);
    if (!temporary.file()) return false;
    if (writeAll(temporary.file().get(), contents) != FileResult::Ok) return false;
    if (exists() && !takeOver(place_, temporary.file().get())) return false;
    if (syncFile(temporary.file().get()) != FileResult::Ok || !temporary.rename(place_.name)) return false;
    // On FAT a name is where the length of its file stands, and a new one says 0 until the file is synced
    // once more.
    return syncAndClose(temporary.file()) == FileResult::Ok &&
           syncFolder(place_.folder.get()) == FileResult::Ok;
}

} // namespace platform::linux
