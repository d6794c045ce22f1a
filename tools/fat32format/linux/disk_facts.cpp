#include "tools/fat32format/linux/disk_facts.h"

#include "base/trim.h"
#include "base/whole_number.h"
#include "tools/fat32format/linux/kernel_text.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <map>
#include <sstream>
#include <string_view>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace fat32format {

namespace {

namespace fs = std::filesystem;

/// Length of a sector in /sys, whatever the disk's own is.
constexpr std::uint64_t kernelSector = 512;

std::string trimmed(const std::string& text) {
    constexpr const char* blanks = " \t\r\n";
    return std::string(base::trim(text, blanks));
}

std::string firstLine(const std::string& text) {
    return trimmed(text.substr(0, text.find('\n')));
}

/// First line of a file that need not be there; empty when it cannot be read.
std::string optionalLine(const fs::path& file) {
    return firstLine(readText(file).text);
}

/// Reads what a decision hangs on, and notes the first thing that cannot be read: it must not pass for one
/// that is empty.
class Reader {
public:
    explicit Reader(std::string& unreadable) : unreadable_(unreadable) {}

    std::string text(const fs::path& file) {
        const FileText read = readText(file);
        if (read.error != 0) note(file);
        return read.text;
    }

    std::uint64_t number(const fs::path& file) {
        if (const auto value = base::wholeNumber<std::uint64_t>(firstLine(text(file)))) return *value;
        note(file);
        return 0;
    }

    std::vector<std::string> names(const fs::path& folder) {
        const FolderNames read = readNames(folder);
        if (read.error != 0) note(folder);
        return read.names;
    }

    bool isThere(const fs::path& file) {
        struct stat info {};
        if (stat(file.c_str(), &info) == 0) return true;
        if (errno != ENOENT && errno != ENOTDIR) note(file);
        return false;
    }

    /// Where a path leads to in the end; the path itself when it leads nowhere.
    std::string resolved(const std::string& path) {
        std::error_code error;
        const fs::path real = fs::canonical(path, error);
        if (!error) return real;
        if (error != std::errc::no_such_file_or_directory) note(path);
        return path;
    }

private:
    void note(const fs::path& what) {
        if (unreadable_.empty()) unreadable_ = what.string();
    }

    std::string& unreadable_;
};

std::string numberText(unsigned major, unsigned minor) {
    return std::to_string(major) + ':' + std::to_string(minor);
}

std::optional<fs::path> folderOf(const FactFolders& folders, const std::string& number) {
    std::error_code error;
    fs::path folder = fs::canonical(folders.sys / "dev/block" / number, error);
    if (error) return std::nullopt;
    return folder;
}

/// The kernel writes "!" for the slash of a device's name.
std::string nodeOf(const fs::path& folder) {
    std::string name = folder.filename();
    std::replace(name.begin(), name.end(), '!', '/');
    return "/dev/" + name;
}

std::vector<fs::path> partitionsOf(Reader& reader, const fs::path& disk) {
    std::vector<fs::path> partitions;
    for (const std::string& name : reader.names(disk))
        if (reader.isThere(disk / name / "partition")) partitions.push_back(disk / name);
    return partitions;
}

/// A property from udev's database; empty when udev does not know it.
std::string udevProperty(const FactFolders& folders, const std::string& number, const std::string& name) {
    std::istringstream lines(readText(folders.udev / ("b" + number)).text);
    const std::string start = "E:" + name + '=';
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with(start)) return trimmed(line.substr(start.size()));
    return {};
}

bool isHexadecimal(std::string_view text) {
    return text.size() == 2 &&
           std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isxdigit(c) != 0; });
}

/// "\\x20" and the like in udev's properties, the reverse of libudev's udev_util_encode_string().
std::string decoded(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::string digits = text.substr(std::min(i + 2, text.size()), 2);
        const bool encoded = text.compare(i, 2, "\\x") == 0 && isHexadecimal(digits);
        result += encoded ? static_cast<char>(std::stoi(digits, nullptr, 16)) : text[i];
        if (encoded) i += 3;
    }
    return result;
}

/// Of the file system on the device; the plain property has other characters in the place of special ones.
std::string labelOf(const FactFolders& folders, const std::string& number) {
    const std::string encoded = udevProperty(folders, number, "ID_FS_LABEL_ENC");
    return encoded.empty() ? udevProperty(folders, number, "ID_FS_LABEL") : trimmed(decoded(encoded));
}

/// "usb" and a number: the host controller that the device hangs on.
bool isUsbHost(const std::string& name) {
    return name.size() > 3 && name.starts_with("usb") &&
           std::all_of(name.begin() + 3, name.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
}

bool hangsOnUsb(const fs::path& disk) {
    return std::any_of(disk.begin(), disk.end(),
                       [](const fs::path& part) { return isUsbHost(part.string()); });
}

/// Of the device itself, else of the USB device that it hangs on. Beyond that one there are only hubs, which
/// have serial numbers of their own.
std::string serialOf(const fs::path& disk) {
    if (std::string serial = optionalLine(disk / "device/serial"); !serial.empty()) return serial;
    for (fs::path folder = disk; folder.has_relative_path(); folder = folder.parent_path())
        if (!optionalLine(folder / "idVendor").empty()) return optionalLine(folder / "serial");
    return {};
}

/// In the order of the desktop's disk service, which the table of drives has it from: it takes the serial of
/// SCSI for disks that are SCSI's and not ATA's only, and is content with none.
std::string udevSerial(const FactFolders& folders, const std::string& number) {
    const auto property = [&](const char* name) { return udevProperty(folders, number, name); };
    const bool isScsi = property("ID_SCSI") == "1" && property("ID_ATA") != "1";
    std::string serial = isScsi ? property("ID_SCSI_SERIAL") : std::string();
    for (const char* name : {"ID_SERIAL_SHORT", "ID_SERIAL"})
        if (serial.empty()) serial = property(name);
    return serial;
}

void readDiskNames(const FactFolders& folders, const fs::path& disk, Volume& volume) {
    const std::string number = optionalLine(disk / "dev");
    const std::string vendor = optionalLine(disk / "device/vendor");
    const std::string model = optionalLine(disk / "device/model");
    volume.model = trimmed(vendor + ' ' + model);
    if (model.empty()) volume.model = udevProperty(folders, number, "ID_MODEL");
    volume.serial = udevSerial(folders, number);
    volume.deviceSerial = serialOf(disk);
}

bool isOctal(const std::string& text) {
    return text.size() == 3 && text[0] <= '3' &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '7'; });
}

/// "\040" and the like in the kernel's tables.
std::string unescaped(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::string digits = text.substr(i + 1, 3);
        const bool escaped = text[i] == '\\' && isOctal(digits);
        result += escaped ? static_cast<char>(std::stoi(digits, nullptr, 8)) : text[i];
        if (escaped) i += digits.size();
    }
    return result;
}

/// A disk and its partitions, as other tables name them.
class Devices {
public:
    Devices(Reader& reader, const fs::path& disk) : reader_(reader), folders_(partitionsOf(reader, disk)) {
        hasPartitions_ = !folders_.empty();
        folders_.push_back(disk);
        for (const fs::path& folder : folders_)
            nodes_.insert({firstLine(reader_.text(folder / "dev")), nodeOf(folder)});
    }

    bool hasPartitions() const { return hasPartitions_; }

    /// The node of the one that a number, or else the path of a device, perhaps one of its many links, means;
    /// empty when it is none of them.
    std::string node(const std::string& number, const std::string& path) {
        if (const auto found = nodes_.find(number); found != nodes_.end()) return found->second;
        if (!path.starts_with("/dev/")) return {};
        const std::string real = reader_.resolved(path);
        const bool isOne = std::any_of(nodes_.begin(), nodes_.end(),
                                       [&real](const auto& entry) { return entry.second == real; });
        return isOne ? real : std::string();
    }

    /// Whether something is built upon one of them: a volume group, an encrypted volume, a RAID.
    bool haveHolders() {
        return std::any_of(folders_.begin(), folders_.end(), [this](const fs::path& folder) {
            return !reader_.names(folder / "holders").empty();
        });
    }

private:
    Reader& reader_;
    std::vector<fs::path> folders_;
    std::map<std::string, std::string> nodes_; ///< by number, "8:17"
    bool hasPartitions_ = false;
};

/// Where something of the devices is mounted, in the order of mounting. File systems with device numbers of
/// their own (btrfs, those in user space) are known by the device they name as their source.
/// https://www.kernel.org/doc/html/latest/filesystems/proc.html, 3.5
std::vector<Mount> mountsOf(Reader& reader, const fs::path& table, Devices& devices) {
    std::vector<Mount> mounts;
    std::istringstream lines(reader.text(table));
    for (std::string line; std::getline(lines, line);) {
        std::istringstream fields(line);
        std::string skipped;
        std::string number;
        std::string place;
        fields >> skipped >> skipped >> number >> skipped >> place;
        while (fields >> skipped && skipped != "-") {
        }
        std::string type;
        std::string source;
        fields >> type >> source;
        if (const std::string node = devices.node(number, unescaped(source)); !node.empty())
            mounts.push_back({node, unescaped(place)});
    }
    return mounts;
}

bool haveSwap(Reader& reader, const fs::path& table, Devices& devices) {
    std::istringstream lines(reader.text(table));
    for (std::string line; std::getline(lines, line);) {
        const std::string path = unescaped(line.substr(0, line.find_first_of(" \t")));
        if (!devices.node({}, path).empty()) return true;
    }
    return false;
}

/// The number of a device, "8:17", wherever its node lies; empty when the path is none.
std::string numberOf(const std::string& path) {
    struct stat info {};
    if (stat(path.c_str(), &info) != 0 || !S_ISBLK(info.st_mode)) return {};
    return numberText(major(info.st_rdev), minor(info.st_rdev));
}

/// Whether a loop device lies on one of the devices. It does not show as a holder, and does not keep others
/// from opening the disk for themselves.
/// https://www.kernel.org/doc/Documentation/ABI/testing/sysfs-block-loop
bool haveLoop(Reader& reader, const fs::path& blocks, Devices& devices) {
    const std::string deleted = " (deleted)"; // the node, by now
    for (const std::string& name : reader.names(blocks)) {
        const fs::path file = blocks / name / "loop/backing_file";
        if (!name.starts_with("loop") || !reader.isThere(file)) continue;
        std::string path = reader.text(file);
        path.erase(path.find_last_not_of('\n') + 1);
        if (path.ends_with(deleted)) path.erase(path.size() - deleted.size());
        if (!devices.node(numberOf(path), path).empty()) return true;
    }
    return false;
}

void readUse(Reader& reader, const FactFolders& folders, const fs::path& disk, Volume& volume) {
    Devices devices(reader, disk);
    volume.diskHasPartitions = devices.hasPartitions();
    volume.mounts = mountsOf(reader, folders.proc / "self/mountinfo", devices);
    const bool onlyUsers = std::all_of(volume.mounts.begin(), volume.mounts.end(),
                                       [](const Mount& mount) { return isUsersPlace(mount.place); });
    const bool swap = haveSwap(reader, folders.proc / "swaps", devices);
    const bool loop = haveLoop(reader, folders.sys / "block", devices);
    volume.systemUse = devices.haveHolders() || swap || loop || !onlyUsers;
}

} // namespace

bool isUsersPlace(const std::string& place) {
    return place == "/mnt" || place.starts_with("/mnt/") || place.starts_with("/media/") ||
           place.starts_with("/run/media/");
}

std::optional<Volume> readFacts(const FactFolders& folders, unsigned major, unsigned minor) {
    const auto folder = folderOf(folders, numberText(major, minor));
    if (!folder) return std::nullopt;
    Volume volume;
    Reader reader(volume.unreadable);
    volume.isPartition = reader.isThere(*folder / "partition");
    const fs::path disk = volume.isPartition ? folder->parent_path() : *folder;
    volume.node = nodeOf(*folder);
    volume.diskNode = nodeOf(disk);
    volume.deviceNumber = (std::uint64_t{major} << 32U) | minor;
    volume.diskSequence = reader.number(disk / "diskseq");
    if (volume.isPartition) volume.start = reader.number(*folder / "start") * kernelSector;
    volume.bytes = reader.number(*folder / "size") * kernelSector;
    volume.diskBytes = reader.number(disk / "size") * kernelSector;
    volume.sectorSize = static_cast<std::uint32_t>(reader.number(disk / "queue/logical_block_size"));
    volume.readOnly = reader.number(*folder / "ro") != 0 || reader.number(disk / "ro") != 0;
    volume.onUsb = hangsOnUsb(disk) || udevProperty(folders, optionalLine(disk / "dev"), "ID_BUS") == "usb";
    readDiskNames(folders, disk, volume);
    volume.label = labelOf(folders, numberText(major, minor));
    readUse(reader, folders, disk, volume);
    return volume;
}

} // namespace fat32format
