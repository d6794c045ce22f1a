#include "tools/fat32format/disk_facts.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <set>
#include <sstream>

namespace fat32format {

namespace {

namespace fs = std::filesystem;

/// Length of a sector in /sys, whatever the disk's own is.
constexpr std::uint64_t kernelSector = 512;

std::string trimmed(const std::string& text) {
    constexpr const char* blanks = " \t\r\n";
    const std::size_t begin = text.find_first_not_of(blanks);
    if (begin == std::string::npos) return {};
    return text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

/// First line of a file, without blanks around it; empty when there is none.
std::string readLine(const fs::path& file) {
    std::ifstream stream(file);
    std::string line;
    std::getline(stream, line);
    return trimmed(line);
}

std::uint64_t readNumber(const fs::path& file) {
    std::istringstream text(readLine(file));
    std::uint64_t number = 0;
    text >> number;
    return text ? number : 0;
}

bool isThere(const fs::path& file) {
    std::error_code error;
    return fs::exists(file, error);
}

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

std::vector<fs::path> partitionsOf(const fs::path& disk) {
    std::vector<fs::path> partitions;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(disk, error)) {
        if (isThere(entry.path() / "partition")) partitions.push_back(entry.path());
    }
    return partitions;
}

/// A property from udev's database; empty when udev does not know it.
std::string udevProperty(const FactFolders& folders, const std::string& number, const std::string& name) {
    std::ifstream file(folders.udev / ("b" + number));
    const std::string start = "E:" + name + '=';
    for (std::string line; std::getline(file, line);)
        if (line.starts_with(start)) return trimmed(line.substr(start.size()));
    return {};
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
    if (std::string serial = readLine(disk / "device/serial"); !serial.empty()) return serial;
    for (fs::path folder = disk; folder.has_relative_path(); folder = folder.parent_path())
        if (isThere(folder / "idVendor")) return readLine(folder / "serial");
    return {};
}

void readNames(const FactFolders& folders, const fs::path& disk, Volume& volume) {
    const std::string number = readLine(disk / "dev");
    const std::string vendor = readLine(disk / "device/vendor");
    const std::string model = readLine(disk / "device/model");
    volume.model = trimmed(vendor + ' ' + model);
    if (model.empty()) volume.model = udevProperty(folders, number, "ID_MODEL");
    volume.serial = udevProperty(folders, number, "ID_SERIAL_SHORT");
    if (volume.serial.empty()) volume.serial = serialOf(disk);
}

/// The disk and its partitions, as other tables name them.
struct Names {
    std::set<std::string> numbers; ///< "8:17"
    std::set<std::string> nodes;   ///< "/dev/sdb1"

    void add(const fs::path& folder) {
        numbers.insert(readLine(folder / "dev"));
        nodes.insert(nodeOf(folder));
    }
    /// Whether a device's path, perhaps one of its many links, means one of them.
    bool hasNode(const std::string& path) const {
        if (!path.starts_with("/dev/")) return false;
        std::error_code error;
        const fs::path node = fs::canonical(path, error);
        return nodes.contains(error ? path : node.string());
    }
};

/// "\040" and the like in the kernel's tables.
std::string unescaped(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool escaped = text[i] == '\\' && i + 3 < text.size() && std::isdigit(text[i + 1]) != 0;
        if (escaped)
            result += static_cast<char>(std::stoi(text.substr(i + 1, 3), nullptr, 8));
        else
            result += text[i];
        if (escaped) i += 3;
    }
    return result;
}

/// Where something of the devices is mounted, in the order of mounting. File systems with device numbers of
/// their own (btrfs, those in user space) are known by the device they name as their source.
/// https://www.kernel.org/doc/html/latest/filesystems/proc.html, 3.5
std::vector<std::string> mountsOf(const FactFolders& folders, const Names& names) {
    std::vector<std::string> places;
    std::ifstream file(folders.proc / "self/mountinfo");
    for (std::string line; std::getline(file, line);) {
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
        if (names.numbers.contains(number) || names.hasNode(unescaped(source)))
            places.push_back(unescaped(place));
    }
    return places;
}

bool isSwap(const FactFolders& folders, const Names& names) {
    std::ifstream file(folders.proc / "swaps");
    for (std::string line; std::getline(file, line);) {
        const std::string path = unescaped(line.substr(0, line.find_first_of(" \t")));
        if (names.hasNode(path)) return true;
    }
    return false;
}

/// Something is built upon it: a volume group, an encrypted volume, a RAID.
bool hasHolders(const fs::path& folder) {
    std::error_code error;
    const fs::directory_iterator holders(folder / "holders", error);
    return !error && holders != fs::directory_iterator();
}

bool isInSystemUse(const FactFolders& folders, const fs::path& disk) {
    std::vector<fs::path> devices = partitionsOf(disk);
    devices.push_back(disk);
    Names names;
    for (const fs::path& device : devices)
        names.add(device);
    const std::vector<std::string> places = mountsOf(folders, names);
    return std::any_of(devices.begin(), devices.end(), hasHolders) || isSwap(folders, names) ||
           !std::all_of(places.begin(), places.end(), isUsersPlace);
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
    volume.isPartition = isThere(*folder / "partition");
    const fs::path disk = volume.isPartition ? folder->parent_path() : *folder;
    volume.node = nodeOf(*folder);
    volume.stableNode = volume.node;
    volume.diskNode = nodeOf(disk);
    volume.deviceNumber = (std::uint64_t{major} << 32U) | minor;
    volume.diskSequence = readNumber(disk / "diskseq");
    volume.bytes = readNumber(*folder / "size") * kernelSector;
    volume.diskBytes = readNumber(disk / "size") * kernelSector;
    if (const std::uint64_t size = readNumber(disk / "queue/logical_block_size"); size != 0)
        volume.sectorSize = static_cast<std::uint32_t>(size);
    volume.diskHasPartitions = !partitionsOf(disk).empty();
    volume.readOnly = readNumber(*folder / "ro") != 0 || readNumber(disk / "ro") != 0;
    volume.onUsb = hangsOnUsb(disk) || udevProperty(folders, readLine(disk / "dev"), "ID_BUS") == "usb";
    readNames(folders, disk, volume);
    volume.systemUse = isInSystemUse(folders, disk);
    Names own;
    own.add(*folder);
    volume.mounts = mountsOf(folders, own);
    return volume;
}

/// https://www.kernel.org/doc/html/latest/block/stat.html
std::uint64_t readBytesWritten(const FactFolders& folders, unsigned major, unsigned minor) {
    const auto folder = folderOf(folders, numberText(major, minor));
    if (!folder) return 0;
    std::istringstream fields(readLine(*folder / "stat"));
    constexpr int sectorsWritten = 7;
    std::uint64_t value = 0;
    for (int field = 1; field <= sectorsWritten; ++field)
        fields >> value;
    return fields ? value * kernelSector : 0;
}

} // namespace fat32format
