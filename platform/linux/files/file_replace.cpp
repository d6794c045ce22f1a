#include "platform/linux/files/file_replace.h"

#include "platform/linux/base/file_error.h"
#include "platform/linux/files/drive_io.h"
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
            error_ = file_ ? 0 : errno;
            if (error_ != EEXIST) break;
        }
        exists_ = static_cast<bool>(file_);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        if (exists_) unlinkat(folder_, name_.c_str(), 0);
    }

    /// Ok, or why there is none.
    FileResult created() const { return fileResult(error_); }
    UniqueFd& file() { return file_; }

    FileResult rename(const std::string& name) {
        if (renameat(folder_, name_.c_str(), folder_, name.c_str()) != 0) return fileResult(errno);
        exists_ = false;
        return FileResult::Ok;
    }

private:
    int folder_;
    std::string name_;
    UniqueFd file_;
    int error_ = 0;
    bool exists_ = false;
};

/// Makes the new file what the old one was. Another user's file may become the writer's own: who may replace
/// a file in a folder may do so.
FileResult takeOver(const Place& place, int file) {
    UniqueFd old;
    const FileResult opened = openToRead(place, old);
    if (opened != FileResult::Ok) return opened;
    const bool kept = fchown(file, place.info->st_uid, place.info->st_gid) == 0 ||
                      fchown(file, static_cast<uid_t>(-1), place.info->st_gid) == 0;
    static_cast<void>(kept);
    return copyAttributes(old.get(), place, file);
}

FileResult mayWrite(int folder, const char* name) {
    return fileResult(faccessat(folder, name, W_OK, AT_EACCESS) == 0 ? 0 : errno);
}

} // namespace

FileReplacement::FileReplacement(std::string_view path, const DriveIdentity& drive, mode_t mode)
    : mode_(mode), possible_(prepare(path, drive)) {}

FileResult FileReplacement::prepare(std::string_view path, const DriveIdentity& drive) {
    FileResult result = locate(path, place_, drive);
    if (result == FileResult::Ok && place_.asksForFolder) result = FileResult::PathNotFound;
    if (result == FileResult::Ok && place_.info) {
        if (!place_.isFile()) return FileResult::PathFileAccess;
        if ((attributesOf(place_) & FileReadOnly) != 0) return FileResult::PermissionDenied;
        result = enterLinkedFolder();
        if (result == FileResult::Ok) result = mayWrite(place_.folder.get(), place_.name.c_str());
    }
    return result == FileResult::Ok ? mayWrite(place_.folder.get(), ".") : result;
}

/// In the program's own folders a file may be a link; what it leads to is replaced then, not the link.
FileResult FileReplacement::enterLinkedFolder() {
    struct stat info {};
    if (fstatat(place_.folder.get(), place_.name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0)
        return fileResult(errno);
    if (!S_ISLNK(info.st_mode)) return FileResult::Ok;
    std::error_code error;
    const auto file = std::filesystem::canonical(place_.folderPath + place_.name, error);
    if (error) return fileResult(error.value());
    place_.folderPath = file.parent_path() / "";
    place_.name = file.filename();
    place_.folder = UniqueFd(open(place_.folderPath.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    return fileResult(place_.folder ? 0 : errno);
}

FileResult FileReplacement::replace(std::string_view contents) {
    constexpr mode_t forOwner = 0600;
    TemporaryFile temporary(place_.folder.get(), exists() ? forOwner : mode_);
    FileResult result = temporary.created();
    if (result != FileResult::Ok) return result;
    const int file = temporary.file().get();
    result = writeToDrive(file, contents);
    if (result == FileResult::Ok && exists()) result = takeOver(place_, file);
    if (result == FileResult::Ok) result = syncOnDrive(file);
    if (result == FileResult::Ok) result = temporary.rename(place_.name);
    // On FAT a name is where the length of its file stands, and a new one says 0 until the file is synced
    // once more.
    if (result == FileResult::Ok) result = syncAndCloseOnDrive(temporary.file());
    return result == FileResult::Ok ? syncFolderOnDrive(place_.folder.get()) : result;
}

} // namespace platform::linux
