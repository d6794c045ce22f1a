#include "platform/linux/files/file_io.h"

#include "platform/linux/base/file_error.h"

#include <cerrno>
#include <fcntl.h>
#include <linux/magic.h>
#include <linux/msdos_fs.h>
#include <sys/ioctl.h>
#include <sys/vfs.h>

namespace platform::linux {

namespace {

constexpr mode_t permissionBits = 0777;
constexpr mode_t executeBits = 0111;

bool isFat(int file) {
    struct statfs fileSystem {};
    return fstatfs(file, &fileSystem) == 0 && fileSystem.f_type == MSDOS_SUPER_MAGIC;
}

/// https://www.kernel.org/doc/html/latest/filesystems/vfat.html, FAT_IOCTL_GET_ATTRIBUTES
std::optional<std::uint32_t> fatAttributes(int file) {
    std::uint32_t attributes = 0;
    if (!isFat(file) || ioctl(file, FAT_IOCTL_GET_ATTRIBUTES, &attributes) != 0) return std::nullopt;
    return attributes;
}

std::uint32_t madeUpAttributes(const char* name, const struct stat& info) {
    if (S_ISDIR(info.st_mode)) return FileDirectory;
    std::uint32_t attributes = FileArchive;
    if ((info.st_mode & S_IWUSR) == 0) attributes |= FileReadOnly;
    if (name[0] == '.') attributes |= FileHidden;
    return attributes;
}

/// Opens what must be a plain file. Not waiting matters for a pipe that takes the file's place at this
/// moment.
FileResult openPlainFile(const Place& place, int flags, UniqueFd& file) {
    constexpr mode_t forEverybody = 0666; // less what the user's mask takes away
    const int links = place.followsLinks ? 0 : O_NOFOLLOW;
    UniqueFd opened(openat(place.folder.get(), place.name.c_str(),
                           flags | links | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, forEverybody));
    if (!opened) return fileResult(errno);
    struct stat info {};
    if (fstat(opened.get(), &info) != 0) return fileResult(errno);
    if (!S_ISREG(info.st_mode)) return FileResult::PathFileAccess;
    file = std::move(opened);
    return FileResult::Ok;
}

/// Whether a name may stand for a file at all; Ok when there is none yet.
FileResult checkIsFile(const Place& place) {
    if (place.isRoot || place.isFolder()) return FileResult::PathFileAccess;
    if (place.asksForFolder) return FileResult::PathNotFound;
    return !place.info || place.isFile() ? FileResult::Ok : FileResult::PathFileAccess;
}

/// What a copy of the source has on FAT.
std::uint32_t copiedAttributes(const Place& source) {
    return (attributesOf(source) | FileArchive) & ~std::uint32_t{FileReadOnly};
}

/// What a copy of the source, which is open, has elsewhere; no value when that cannot be told.
std::optional<mode_t> copiedMode(int from) {
    struct stat info {};
    if (fstat(from, &info) != 0) return std::nullopt;
    // On FAT the mount options give every file the right to be executed, which says nothing about it.
    const mode_t kept = isFat(from) ? permissionBits & ~executeBits : permissionBits;
    return (info.st_mode & kept) | S_IWUSR;
}

} // namespace

Folder::Folder(int number) : file(number), isFat(linux::isFat(number)) {}

std::uint32_t attributesOf(const Folder& folder, const char* name, const struct stat& info) {
    if (folder.isFat) {
        const UniqueFd file(
            openat(folder.file, name, O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC));
        if (file) {
            if (const auto attributes = fatAttributes(file.get())) return *attributes;
        }
    }
    return madeUpAttributes(name, info);
}

std::uint32_t attributesOf(const Place& place) {
    if (place.isRoot) return FileDirectory;
    return attributesOf(Folder(place.folder.get()), place.name.c_str(), *place.info);
}

FileResult openToRead(const Place& place, UniqueFd& file) {
    const FileResult check = checkIsFile(place);
    if (check != FileResult::Ok) return check;
    if (!place.info) return FileResult::FileNotFound;
    return openPlainFile(place, O_RDONLY, file);
}

FileResult openToWrite(const Place& place, UniqueFd& file) {
    const FileResult check = checkIsFile(place);
    if (check != FileResult::Ok) return check;
    if (place.info && (attributesOf(place) & FileReadOnly) != 0) return FileResult::PermissionDenied;
    const FileResult result = openPlainFile(place, O_WRONLY | O_CREAT, file);
    // A file that is to be created can only miss its folder.
    return result == FileResult::FileNotFound ? FileResult::PathNotFound : result;
}

void clearAttributes(Place& place) {
    UniqueFd file;
    if (!place.isFile() || openPlainFile(place, O_RDONLY, file) != FileResult::Ok) return;
    if (const auto stored = fatAttributes(file.get())) {
        std::uint32_t attributes = *stored & ~std::uint32_t{FileReadOnly | FileHidden | FileSystem};
        if (attributes != *stored) (void)ioctl(file.get(), FAT_IOCTL_SET_ATTRIBUTES, &attributes);
    } else if ((place.info->st_mode & S_IWUSR) == 0) {
        (void)fchmod(file.get(), (place.info->st_mode & permissionBits) | S_IWUSR);
    }
    struct stat info {};
    if (fstat(file.get(), &info) == 0) place.info = info;
}

FileResult copyAttributes(int from, const Place& source, int to) {
    int result = 0;
    if (isFat(to)) {
        std::uint32_t attributes = copiedAttributes(source);
        result = ioctl(to, FAT_IOCTL_SET_ATTRIBUTES, &attributes);
    } else if (const auto mode = copiedMode(from)) {
        result = fchmod(to, *mode);
    }
    // A file system without such attributes is no failure, one that cannot be written is.
    const FileResult outcome = result == 0 ? FileResult::Ok : fileResult(errno);
    const bool lost = outcome == FileResult::DeviceIo || outcome == FileResult::DiskFull ||
                      outcome == FileResult::DiskNotReady;
    return lost ? outcome : FileResult::Ok;
}

bool hasCopiedAttributes(int file, int from, const Place& source) {
    if (isFat(file)) return fatAttributes(file) == copiedAttributes(source);
    struct stat info {};
    return fstat(file, &info) == 0 && copiedMode(from) == (info.st_mode & permissionBits);
}

} // namespace platform::linux
