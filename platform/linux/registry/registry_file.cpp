#include "platform/linux/registry/registry_file.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <utility>

namespace fs = std::filesystem;

namespace platform::linux {

namespace {

constexpr mode_t fileForOwner = 0600;
constexpr mode_t folderForOwner = 0700;
constexpr mode_t permissionBits = 0777;

/// Calls until no signal came in between; 0 or the error number.
template <typename Call>
int untilDone(Call call) {
    while (call() != 0) {
        if (errno != EINTR) return errno;
    }
    return 0;
}

int writeAll(int file, std::string_view bytes, std::uint64_t position) {
    while (!bytes.empty()) {
        const ssize_t written = pwrite(file, bytes.data(), bytes.size(), static_cast<off_t>(position));
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return errno;
        if (written == 0) return EIO;
        bytes.remove_prefix(static_cast<std::size_t>(written));
        position += static_cast<std::uint64_t>(written);
    }
    return 0;
}

int createFolders(const fs::path& folder) {
    if (mkdir(folder.c_str(), folderForOwner) == 0 || errno == EEXIST) return 0;
    if (errno != ENOENT || folder.parent_path() == folder) return errno;
    const int error = createFolders(folder.parent_path());
    if (error != 0) return error;
    return mkdir(folder.c_str(), folderForOwner) == 0 || errno == EEXIST ? 0 : errno;
}

/// A link is followed here, once, so that a file put in the place of its target leaves the link alone.
std::string withoutLinks(const std::string& path) {
    std::error_code error;
    const fs::path target = fs::weakly_canonical(path, error);
    return error ? path : target.string();
}

} // namespace

RegistryFile::RegistryFile(const std::string& path) : path_(withoutLinks(path)) {}

int RegistryFile::lock(bool exclusive, bool create) {
    if (exclusive && !writable_) file_.close(); // it may have become writable
    for (;;) {
        if (!file_) {
            const int error = open(create);
            if (error != 0) return error;
        }
        if (exclusive && !writable_) return EACCES;
        const int error = untilDone([&] { return flock(file_.get(), exclusive ? LOCK_EX : LOCK_SH); });
        if (error != 0) return error;
        if (isCurrent()) return 0;
        file_.close();
    }
}

void RegistryFile::unlock() {
    flock(file_.get(), LOCK_UN);
}

bool RegistryFile::wasExchanged() {
    return std::exchange(exchanged_, false);
}

int RegistryFile::open(bool create) {
    if (create) {
        const int error = createFolders(fs::path(path_).parent_path());
        if (error != 0) return error;
    }
    // Not waiting matters for a pipe that has the file's name.
    constexpr int flags = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    UniqueFd file(::open(path_.c_str(), flags | O_RDWR | (create ? O_CREAT : 0), fileForOwner));
    writable_ = static_cast<bool>(file);
    if (!file && (errno == EACCES || errno == EPERM || errno == EROFS))
        file = UniqueFd(::open(path_.c_str(), flags | O_RDONLY));
    if (!file) return errno;
    exchanged_ = true;
    nameSynced_ = false;
    return adopt(std::move(file));
}

/// Whether the name still means the open file; its size is learned on the way.
bool RegistryFile::isCurrent() {
    struct stat info {};
    if (stat(path_.c_str(), &info) != 0 || info.st_dev != device_ || info.st_ino != inode_) return false;
    size_ = static_cast<std::uint64_t>(info.st_size);
    return true;
}

int RegistryFile::adopt(UniqueFd file) {
    struct stat info {};
    if (fstat(file.get(), &info) != 0) return errno;
    if (!S_ISREG(info.st_mode)) return EINVAL;
    file_ = std::move(file);
    device_ = info.st_dev;
    inode_ = info.st_ino;
    size_ = static_cast<std::uint64_t>(info.st_size);
    return 0;
}

int RegistryFile::readFrom(std::uint64_t position, std::string& bytes) const {
    bytes.resize(size_ > position ? static_cast<std::size_t>(size_ - position) : 0);
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const ssize_t got = pread(file_.get(), bytes.data() + filled, bytes.size() - filled,
                                  static_cast<off_t>(position + filled));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return errno;
        if (got == 0) break;
        filled += static_cast<std::size_t>(got);
    }
    bytes.resize(filled);
    return 0;
}

int RegistryFile::writeAt(std::uint64_t position, std::string_view bytes) {
    const auto cutOff = [&] { return ftruncate(file_.get(), static_cast<off_t>(position)); };
    if (size_ > position) {
        const int error = untilDone(cutOff);
        if (error != 0) return error;
    }
    const int error = writeAll(file_.get(), bytes, position);
    // Should this fail, too, then half a record stays behind, which every reader passes over.
    if (error != 0) untilDone(cutOff);
    size_ = position + (error == 0 ? bytes.size() : 0);
    return error;
}

int RegistryFile::replace(std::string_view contents) {
    const std::string temporary = path_ + ".new"; // what a killed process left under this name is overwritten
    UniqueFd file(
        ::open(temporary.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, fileForOwner));
    if (!file) return errno;
    struct stat info {};
    int error = untilDone([&] { return flock(file.get(), LOCK_EX); });
    if (error == 0 &&
        (fstat(file_.get(), &info) != 0 || fchmod(file.get(), info.st_mode & permissionBits) != 0))
        error = errno;
    if (error == 0) error = writeAll(file.get(), contents, 0);
    if (error == 0) error = untilDone([&] { return fsync(file.get()); });
    if (error == 0 && rename(temporary.c_str(), path_.c_str()) != 0) error = errno;
    if (error != 0) {
        unlink(temporary.c_str());
        return error;
    }
    nameSynced_ = syncFolder() == 0;
    return adopt(std::move(file));
}

int RegistryFile::keepAside() const {
    constexpr int most = 1000;
    for (int i = 1; i <= most; ++i) {
        const std::string name = path_ + ".damaged-" + std::to_string(i);
        if (link(path_.c_str(), name.c_str()) == 0) return 0;
        if (errno == EEXIST) continue;
        // Not every file system knows a second name; there it is a copy.
        std::error_code error;
        if (fs::copy_file(path_, name, error)) return 0;
        if (error != std::errc::file_exists) return error.value();
    }
    return EEXIST;
}

int RegistryFile::sync() {
    const int error = untilDone([&] { return fdatasync(file_.get()); });
    if (error != 0 || nameSynced_) return error;
    const int nameError = syncFolder();
    nameSynced_ = nameError == 0;
    return nameError;
}

int RegistryFile::syncFolder() const {
    const std::string path = fs::path(path_).parent_path();
    const UniqueFd folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder) return errno; // also when it may be written, only not read
    const int error = untilDone([&] { return fsync(folder.get()); });
    return error == EINVAL ? 0 : error; // network file systems refuse it; their server does it
}

} // namespace platform::linux
