#include "platform/linux/drives_ini.h"

#include "platform/linux/volume_folder.h"
#include "platform/profile.h"
#include "platform/program_folder.h"
#include "platform/text.h"

#include <algorithm>
#include <charconv>
#include <ctime>
#include <fstream>
#include <iterator>
#include <map>

namespace platform::posix {

namespace {

constexpr std::string_view blanks = " \t\n\v\f\r\x1A";

using Keys = std::map<std::string, std::string>; // names in lower case

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string_view unquoted(std::string_view text) {
    const bool quoted =
        text.size() >= 2 && text.front() == text.back() && (text[0] == '"' || text[0] == '\'');
    return quoted ? text.substr(1, text.size() - 2) : text;
}

std::string lowered(std::string_view text) {
    std::string result(text);
    for (char& c : result)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return result;
}

std::optional<std::uint64_t> number(std::string_view text) {
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

/// Value of a key, empty when there is none.
std::string_view valueOf(const Keys& keys, const char* name) {
    const auto found = keys.find(name);
    return found == keys.end() ? std::string_view() : std::string_view(found->second);
}

/// Letter of a section like "e:"; 0 when it is another section.
char letterOf(std::string_view section) {
    if (section.size() != 2 || section[1] != ':' || section[0] < 'a' || section[0] > 'z') return 0;
    return static_cast<char>(section[0] - 'a' + 'A');
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
    return isFolder(asWritten) ? asWritten : below(fromAnsi(path));
}

std::optional<IniDrive> driveOf(char letter, const Keys& keys, const std::string& base) {
    const auto type = number(valueOf(keys, "type"));
    const std::string_view path = valueOf(keys, "path");
    if (path.empty() || !type || *type < DriveRemovable || *type > DriveCdRom) return std::nullopt;
    IniDrive drive;
    drive.letter = letter;
    drive.type = static_cast<DriveType>(*type);
    drive.folder = absoluteFolder(path, base);
    drive.names = {fromAnsi(valueOf(keys, "label")), fromAnsi(valueOf(keys, "filesystem"))};
    drive.total = number(valueOf(keys, "total"));
    drive.free = number(valueOf(keys, "free"));
    return drive;
}

/// Of several sections or keys of one name the first one counts, as in every private-profile file.
std::map<char, Keys> sectionsOf(std::string_view contents) {
    std::map<char, Keys> sections;
    Keys ignored;
    Keys* current = &ignored;
    while (!contents.empty()) {
        const std::size_t end = std::min(contents.find_first_of("\r\n"), contents.size());
        const std::string_view line = trimmed(contents.substr(0, end));
        contents.remove_prefix(std::min(end + 1, contents.size()));
        if (line.empty() || line[0] == ';') continue;
        if (const std::size_t close = line.find(']'); line[0] == '[' && close != std::string_view::npos) {
            const char letter = letterOf(lowered(trimmed(line.substr(1, close - 1))));
            const bool isNew = letter != 0 && !sections.contains(letter);
            current = isNew ? &sections[letter] : &ignored;
        } else if (const std::size_t equals = line.find('='); equals != std::string_view::npos) {
            current->emplace(lowered(trimmed(line.substr(0, equals))),
                             unquoted(trimmed(line.substr(equals + 1))));
        }
    }
    return sections;
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
    for (const auto& [letter, keys] : sectionsOf(contents))
        if (auto drive = driveOf(letter, keys, base)) drives.push_back(std::move(*drive));
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
    if (stat(file.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
        settled_ = false;
        drives_.clear();
        return false;
    }
    if (isUnchanged(status)) return true;
    std::ifstream stream(file, std::ios::binary);
    const std::string contents{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    drives_ = parseDrivesIni(contents, programFolder());
    read_ = status;
    settled_ = isOlderThanTick(status);
    return true;
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
        result.freeToCaller = result.totalFree = result.total - std::min(bytesBelow(*path), result.total);
    }
    return result;
}

std::optional<VolumeNames> IniDrives::names(char letter) {
    if (!folder(letter)) return std::nullopt;
    return find(letter)->names;
}

bool IniDrives::setLabel(char letter, std::string_view label) {
    if (!folder(letter)) return false;
    const std::string section = {letter, ':'};
    return writeProfileString(section, "Label", toAnsi(label), programFolder() + "\\Drives.ini");
}

bool IniDrives::settle(char letter) {
    const auto path = folder(letter);
    return path && syncFolder(*path);
}

std::vector<PresentDrive> IniDrives::present() {
    std::vector<PresentDrive> drives;
    for (const IniDrive& drive : drives_)
        drives.push_back({drive.letter, drive.folder, true});
    return drives;
}

} // namespace platform::posix
