#include "platform/linux/drives/drives_ini.h"

#include "base/text.h"
#include "base/whole_number.h"
#include "platform/linux/base/ansi_case.h"
#include "platform/linux/base/descriptor_io.h"
#include "platform/linux/base/profile_text.h"
#include "platform/linux/base/unique_fd.h"
#include "platform/linux/drives/volume_folder.h"
#include "platform/profile.h"
#include "platform/program_folder.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <system_error>

namespace platform::linux {

namespace {

/// Somebody waits for the window while a drive is measured.
constexpr std::chrono::milliseconds longestMeasure{100};

using Keys = std::vector<ProfileLine>;

std::string_view unquoted(std::string_view text) {
    const bool quoted =
        text.size() >= 2 && text.front() == text.back() && (text[0] == '"' || text[0] == '\'');
    return quoted ? text.substr(1, text.size() - 2) : text;
}

std::optional<std::uint64_t> number(std::string_view text) {
    return base::wholeNumber<std::uint64_t>(text);
}

/// Value of a key, empty when there is none. Of several keys of one name the first one counts: it is the one
/// that is written.
std::string_view valueOf(const Keys& keys, std::string_view name) {
    const auto found = std::find_if(keys.begin(), keys.end(), [name](const ProfileLine& line) {
        return line.value && isSameAnsi(line.key, name);
    });
    return found == keys.end() ? std::string_view() : unquoted(*found->value);
}

/// Whoever wrote the file on this system may have meant the path as UTF-8, and such a folder is no accident.
std::string absoluteFolder(std::string_view path, const std::string& base) {
    const auto below = [&base](const std::string& name) {
        std::string folder = name.front() == '/' ? name : base + "/" + name;
        while (folder.size() > 1 && folder.back() == '/')
            folder.pop_back();
        return folder;
    };
    std::string asWritten = below(std::string(path));
    return isFolder(asWritten) ? asWritten : below(base::fromAnsi(path));
}

std::optional<IniDrive> driveOf(char letter, const Keys& keys, const std::string& base) {
    const auto type = number(valueOf(keys, "Type"));
    const std::string_view path = valueOf(keys, "Path");
    if (path.empty() || !type || *type < DriveRemovable || *type > DriveCdRom) return std::nullopt;
    IniDrive drive;
    drive.letter = letter;
    drive.type = static_cast<DriveType>(*type);
    drive.folder = absoluteFolder(path, base);
    drive.names = {base::fromAnsi(valueOf(keys, "Label")), base::fromAnsi(valueOf(keys, "FileSystem"))};
    drive.total = number(valueOf(keys, "Total"));
    drive.free = number(valueOf(keys, "Free"));
    return drive;
}

std::string because(int error) {
    return "Drives.ini kann nicht gelesen werden: " + std::system_category().message(error);
}

/// Why the file cannot be read; empty when it has been.
std::string readTable(const std::string& path, std::string& text) {
    const UniqueFd file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!file) return because(errno);
    if (readAll(file.get(), text, largestProfile + 1) != FileResult::Ok) return because(errno);
    return text.size() <= largestProfile ? std::string()
                                         : "Drives.ini kann nicht gelesen werden: mehr als 1 MB";
}

/// Younger than this a file may still change within the same tick of the clock that stamps it.
bool isOlderThanTick(const struct stat& status) {
    constexpr std::int64_t tick = 50'000'000;
    struct timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    const std::int64_t age =
        (now.tv_sec - status.st_mtim.tv_sec) * 1'000'000'000 + now.tv_nsec - status.st_mtim.tv_nsec;
    return age > tick;
}

} // namespace

std::vector<IniDrive> parseDrivesIni(std::string_view contents, const std::string& base) {
    std::vector<IniDrive> drives;
    for (char letter = 'A'; letter <= 'Z'; ++letter)
        if (auto drive = driveOf(letter, profileEntries(contents, std::string{letter, ':'}), base))
            drives.push_back(std::move(*drive));
    return drives;
}

bool IniDrives::isUnchanged(const struct stat& status) const {
    return settled_ && status.st_dev == read_.st_dev && status.st_ino == read_.st_ino &&
           status.st_size == read_.st_size && status.st_mtim.tv_sec == read_.st_mtim.tv_sec &&
           status.st_mtim.tv_nsec == read_.st_mtim.tv_nsec;
}

bool IniDrives::load() {
    static const std::string file = programFolder() + "/Drives.ini";
    struct stat status = {};
    const int error = stat(file.c_str(), &status) == 0 ? 0 : errno;
    if (error == ENOENT || error == ENOTDIR || (error == 0 && !S_ISREG(status.st_mode))) {
        there_ = settled_ = false;
        drives_.clear();
        return false;
    }
    if (error != 0)
        complaint_.tell(because(error));
    else if (!isUnchanged(status))
        read(file, status);
    return there_;
}

/// What cannot be read leaves the last good table: a drive in use does not vanish for a moment's error.
void IniDrives::read(const std::string& file, const struct stat& status) {
    std::string contents;
    const std::string failure = readTable(file, contents);
    complaint_.tell(failure);
    there_ = true;
    settled_ = failure.empty() && isOlderThanTick(status);
    if (!failure.empty()) return;
    drives_ = parseDrivesIni(contents, programFolder());
    read_ = status;
}

const IniDrive* IniDrives::find(char letter) const {
    const auto found = std::find_if(drives_.begin(), drives_.end(),
                                    [letter](const IniDrive& drive) { return drive.letter == letter; });
    return found == drives_.end() ? nullptr : &*found;
}

std::string IniDrives::letters() {
    std::string result;
    for (const IniDrive& drive : drives_)
        result += drive.letter;
    return result;
}

DriveType IniDrives::type(char letter) {
    const IniDrive* drive = find(letter);
    return drive != nullptr ? drive->type : DriveNoRootDir;
}

std::string IniDrives::target(char letter) {
    const IniDrive* drive = find(letter);
    return drive != nullptr ? drive->folder : std::string();
}

std::string IniDrives::identity(char letter) {
    struct stat status = {};
    const IniDrive* drive = find(letter);
    if (drive == nullptr || stat(drive->folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) return {};
    return folderIdentity(status);
}

bool IniDrives::isRoot(char letter, const struct stat& folder) {
    return identity(letter) == folderIdentity(folder);
}

std::optional<std::string> IniDrives::folder(char letter) {
    const IniDrive* drive = find(letter);
    if (drive == nullptr || !isFolder(drive->folder)) return std::nullopt;
    return drive->folder;
}

/// What files below the folder leave of that many bytes. A tree that takes too long to measure has what its
/// file system has.
std::optional<std::uint64_t> IniDrives::freeOf(const std::string& folder, std::uint64_t total) {
    if (const auto used = bytesBelow(folder, longestMeasure)) return total - std::min(*used, total);
    const auto space = folderSpace(folder);
    if (!space) return std::nullopt;
    return std::min(space->totalFree, total);
}

std::optional<VolumeSpace> IniDrives::space(char letter) {
    const auto path = folder(letter);
    if (!path) return std::nullopt;
    const IniDrive& drive = *find(letter);
    VolumeSpace result;
    if (!drive.total || !drive.free) {
        const auto measured = drive.total ? VolumeSpace() : folderSpace(*path);
        if (!measured) return std::nullopt;
        result = *measured;
    }
    if (drive.total) result.total = *drive.total;
    if (drive.free) {
        result.freeToCaller = result.totalFree = *drive.free;
    } else if (drive.total) {
        const auto free = freeOf(*path, result.total);
        if (!free) return std::nullopt;
        result.freeToCaller = result.totalFree = *free;
    }
    return result;
}

std::optional<VolumeNames> IniDrives::names(char letter) {
    if (!folder(letter)) return std::nullopt;
    return find(letter)->names;
}

/// The file does not tell who made a disk.
DiskDescription IniDrives::describe(char letter) {
    const auto measured = space(letter);
    const auto known = names(letter);
    return {{}, {}, measured ? measured->total : 0, known ? known->label : std::string()};
}

bool IniDrives::setLabel(char letter, std::string_view label) {
    if (!folder(letter)) return false;
    const std::string section = {letter, ':'};
    return writeProfileString(section, "Label", base::toAnsi(label), programFolder() + "\\Drives.ini");
}

bool IniDrives::settle(char letter) {
    const auto path = folder(letter);
    return path && syncFileSystem(*path);
}

std::vector<PresentDrive> IniDrives::present() {
    std::vector<PresentDrive> drives;
    for (const IniDrive& drive : drives_)
        drives.push_back({drive.letter, drive.folder, true});
    return drives;
}

} // namespace platform::linux
