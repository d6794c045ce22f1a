#include "platform/linux/drives/volume_folder.h"

#include "platform/blocking.h"
#include "platform/linux/base/unique_fd.h"

#include <fcntl.h>
#include <mntent.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <system_error>

namespace platform::linux {

namespace {

struct TableCloser {
    void operator()(FILE* table) const { endmntent(table); }
};

/// In the order in which they were mounted.
template <typename Visitor>
void forEachMount(const std::string& table, Visitor visit) {
    const std::unique_ptr<FILE, TableCloser> entries(setmntent(table.c_str(), "re"));
    if (!entries) return;
    struct mntent entry = {};
    std::array<char, 4096> text{};
    while (getmntent_r(entries.get(), &entry, text.data(), static_cast<int>(text.size())) != nullptr)
        visit(entry);
}

} // namespace

bool isFolder(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::optional<VolumeSpace> folderSpace(const std::string& folder) {
    // The kernel may have to count what is free.
    return blocking([folder]() -> std::optional<VolumeSpace> {
        struct statvfs volume = {};
        if (statvfs(folder.c_str(), &volume) != 0) return std::nullopt;
        const std::uint64_t block = volume.f_frsize;
        return VolumeSpace{block * volume.f_bavail, block * volume.f_blocks, block * volume.f_bfree};
    });
}

std::optional<std::uint64_t> bytesBelow(const std::string& folder, std::chrono::milliseconds longest) {
    namespace fs = std::filesystem;
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + longest;
    std::uint64_t bytes = 0;
    std::error_code error;
    fs::recursive_directory_iterator entry(folder, fs::directory_options::skip_permission_denied, error);
    while (!error && entry != fs::recursive_directory_iterator()) {
        if (Clock::now() > end) return std::nullopt;
        std::error_code entryError;
        if (fs::is_regular_file(entry->symlink_status(entryError))) {
            const std::uint64_t size = entry->file_size(entryError);
            if (!entryError) bytes += size;
        }
        entry.increment(error);
    }
    if (error) return std::nullopt;
    return bytes;
}

bool syncFileSystem(const std::string& folder) {
    return blocking([folder] {
        const UniqueFd opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        return opened && syncfs(opened.get()) == 0;
    });
}

std::optional<std::uint64_t> deviceOf(const std::string& folder) {
    struct stat status = {};
    if (stat(folder.c_str(), &status) != 0) return std::nullopt;
    return status.st_dev;
}

std::string folderIdentity(const struct stat& folder) {
    return std::to_string(folder.st_dev) + ' ' + std::to_string(folder.st_ino);
}

std::string shownDevice(std::uint64_t deviceNumber, const std::string& devices) {
    return devices + '/' + std::to_string(major(deviceNumber)) + ':' + std::to_string(minor(deviceNumber));
}

std::string diskSequence(std::uint64_t deviceNumber, const std::string& devices) {
    const std::string device = shownDevice(deviceNumber, devices);
    std::string sequence;
    for (const char* file : {"/diskseq", "/../diskseq"}) // the latter: of the disk that holds the partition
        if (sequence.empty()) std::getline(std::ifstream(device + file), sequence);
    return sequence;
}

bool hasPartitions(std::uint64_t deviceNumber, const std::string& devices) {
    namespace fs = std::filesystem;
    std::error_code error;
    for (fs::directory_iterator entry(shownDevice(deviceNumber, devices), error), end; !error && entry != end;
         entry.increment(error)) {
        std::error_code ignored; // what has gone meanwhile is none
        if (fs::exists(entry->path() / "partition", ignored)) return true;
    }
    return false;
}

std::optional<std::string> mountPointOf(const std::string& blockDevice, std::uint64_t number,
                                        const std::string& table) {
    std::optional<std::string> folder;
    forEachMount(table, [&](const struct mntent& entry) {
        if (!folder && blockDevice == entry.mnt_fsname && deviceOf(entry.mnt_dir) == number)
            folder = entry.mnt_dir;
    });
    return folder;
}

std::string mountedFileSystem(const std::string& folder) {
    std::string kind;
    forEachMount(mountTable, [&](const struct mntent& entry) {
        if (folder == entry.mnt_dir) kind = entry.mnt_type; // a later mount hides an earlier one
    });
    return kind;
}

} // namespace platform::linux
