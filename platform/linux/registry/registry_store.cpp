#include "platform/linux/registry/registry_store.h"

#include "platform/linux/base/descriptor_io.h"
#include "platform/linux/base/file_error.h"
#include "platform/linux/drives/volume_folder.h"
#include "platform/linux/files/file_replace.h"
#include "platform/linux/files/own_folders.h"
#include "platform/linux/registry/registry_text.h"
#include "platform/registry.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>

namespace fs = std::filesystem;

namespace platform::linux {

namespace {

using Clock = std::chrono::steady_clock;

/// A file beyond this is not read, and none grows beyond it.
constexpr std::uint64_t largestFile = 256ULL * 1024 * 1024;

constexpr mode_t forOwner = 0600;

std::int32_t statusOf(FileResult result) {
    switch (result) {
    case FileResult::Ok:
        return RegistrySuccess;
    case FileResult::PermissionDenied:
        return RegistryAccessDenied;
    case FileResult::DiskFull:
        return RegistryDiskFull;
    default:
        return RegistryIoFailed;
    }
}

bool isSame(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_size == b.st_size &&
           a.st_mtim.tv_sec == b.st_mtim.tv_sec && a.st_mtim.tv_nsec == b.st_mtim.tv_nsec;
}

/// Waits for the lock, which goes with the descriptor.
FileResult lock(const std::string& path, UniqueFd& file) {
    file = UniqueFd(open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, forOwner));
    if (!file) return fileResult(errno);
    while (flock(file.get(), LOCK_EX) != 0)
        if (errno != EINTR) return fileResult(errno);
    return FileResult::Ok;
}

} // namespace

std::int32_t RegistryStore::refresh() {
    struct stat info {};
    const int error = stat(path_.c_str(), &info) == 0 ? 0 : errno;
    if (error == 0 ? isSame(info, read_.info) : error == ENOENT && !read_.file) return RegistrySuccess;
    Version version;
    std::string text;
    const FileResult result = readFile(version, text);
    if (result == FileResult::FileNotFound)
        version = {};
    else if (result != FileResult::Ok)
        return statusOf(result);
    RegistryNode saved;
    damaged_ = !readRegistryText(text, saved);
    for (const Change& change : unsaved_)
        change(saved);
    top_.become(std::move(saved));
    read_ = std::move(version);
    return RegistrySuccess;
}

FileResult RegistryStore::openFile(Version& version) const {
    // Not waiting matters for a pipe that has the file's name.
    version.file = UniqueFd(open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!version.file || fstat(version.file.get(), &version.info) != 0) return fileResult(errno);
    return S_ISREG(version.info.st_mode) ? FileResult::Ok : FileResult::PathFileAccess;
}

FileResult RegistryStore::readFile(Version& version, std::string& text) const {
    const FileResult result = openFile(version);
    if (result != FileResult::Ok) return result;
    if (static_cast<std::uint64_t>(version.info.st_size) > largestFile) return FileResult::PathFileAccess;
    return readAll(version.file.get(), text, largestFile);
}

std::int32_t RegistryStore::change(std::size_t size, Change change) {
    const std::int32_t status = mayGrow(size);
    if (status != RegistrySuccess) return status;
    change(top_);
    unsaved_.push_back(std::move(change));
    unsavedSize_ += size;
    return RegistrySuccess;
}

/// Whether the file could be saved with so many bytes more.
std::int32_t RegistryStore::mayGrow(std::size_t size) const {
    const std::string folder = fs::path(path_).parent_path();
    if (unsaved_.empty()) {
        FileResult result = createOwnFolder(folder);
        if (result == FileResult::Ok) result = FileReplacement(path_).possible();
        if (result != FileResult::Ok) return statusOf(result);
    }
    const std::uint64_t whole = static_cast<std::uint64_t>(read_.info.st_size) + unsavedSize_ + size;
    const auto space = folderSpace(folder);
    const bool isKnown = space && space->total != 0;
    const std::uint64_t room = !isKnown         ? largestFile
                               : geteuid() == 0 ? space->totalFree
                                                : space->freeToCaller;
    return whole > std::min(room, largestFile) ? RegistryDiskFull : RegistrySuccess;
}

std::int32_t RegistryStore::flush() {
    if (unsaved_.empty()) return RegistrySuccess;
    const Clock::time_point begin = Clock::now();
    const std::int32_t status = save();
    constexpr int pauses = 9; // all saving takes a tenth of the time at the most
    nextSave_ = Clock::now() + pauses * (Clock::now() - begin);
    return status;
}

void RegistryStore::saveSoon() {
    if (Clock::now() >= nextSave_) static_cast<void>(flush());
}

std::int32_t RegistryStore::save() {
    UniqueFd locked;
    FileResult result = createOwnFolder(fs::path(path_).parent_path()); // somebody may have removed it
    if (result == FileResult::Ok) result = lock(path_ + ".lock", locked);
    if (result != FileResult::Ok) return statusOf(result);
    const std::int32_t status = refresh();
    if (status != RegistrySuccess) return status;
    if (damaged_ && keepAside() != FileResult::Ok) return RegistryCorrupt;
    FileReplacement file(path_, {}, forOwner);
    result = file.possible();
    if (result == FileResult::Ok) result = file.replace(registryText(top_));
    if (result != FileResult::Ok) return statusOf(result);
    unsaved_.clear();
    unsavedSize_ = 0;
    damaged_ = false;
    // What cannot be opened now is read anew the next time.
    Version version;
    read_ = openFile(version) == FileResult::Ok ? std::move(version) : Version();
    return RegistrySuccess;
}

FileResult RegistryStore::keepAside() const {
    constexpr int most = 1000;
    for (int i = 1; i <= most; ++i) {
        const std::string name = path_ + ".damaged-" + std::to_string(i);
        if (link(path_.c_str(), name.c_str()) == 0) return FileResult::Ok;
        if (errno == EEXIST) continue;
        // Not every file system knows a second name; there it is a copy.
        std::error_code error;
        if (fs::copy_file(path_, name, error)) return FileResult::Ok;
        if (error != std::errc::file_exists) return fileResult(error.value());
    }
    return FileResult::PathFileAccess;
}

} // namespace platform::linux
