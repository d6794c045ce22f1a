#include "tools/fat32format/linux_system.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <thread>
#include <unistd.h>

namespace fat32format {

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr auto partitionDeadline = 5s;
constexpr auto partitionPause = 50ms;

std::string variable(const char* name) {
    const char* value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): nobody sets it
    return value == nullptr ? std::string() : value;
}

/// One of the XDG base directories; without the variable the place that systems use in fact.
fs::path runtimeFolder() {
    const std::string given = variable("XDG_RUNTIME_DIR");
    if (given.starts_with('/')) return given;
    return "/run/user/" + std::to_string(getuid());
}

std::optional<dev_t> deviceNumber(const std::string& node) {
    struct stat info {};
    if (stat(node.c_str(), &info) != 0 || !S_ISBLK(info.st_mode)) return std::nullopt;
    return info.st_rdev;
}

/// The name that udev gives a device by the number of its disk, which no other disk ever gets; the device's
/// own name where udev does not.
std::string stableNode(const Volume& volume) {
    std::string link = "/dev/disk/by-diskseq/" + std::to_string(volume.diskSequence);
    if (volume.isPartition) {
        const std::string digits = volume.node.substr(volume.node.find_last_not_of("0123456789") + 1);
        link += "-part" + digits;
    }
    const auto number = deviceNumber(link);
    return number && number == deviceNumber(volume.node) ? link : volume.node;
}

/// Whether udev has given the device all the names it will have: it notes that last. Not every udev names
/// partitions by the number of their disk.
bool udevHasNamed(const FactFolders& folders, const Volume& volume) {
    const auto number = deviceNumber(volume.node);
    if (!number) return false;
    std::error_code error;
    return fs::exists(
        folders.udev / ("b" + std::to_string(major(*number)) + ':' + std::to_string(minor(*number))), error);
}

/// How the kernel calls the first partition: with a "p" in between when the disk's name ends in a digit.
std::string firstPartitionNode(const std::string& disk) {
    const bool endsInDigit = disk.find_last_of("0123456789") == disk.size() - 1;
    return disk + (endsInDigit ? "p1" : "1");
}

} // namespace

LinuxSystem::LinuxSystem() : table_(findLinkTable(runtimeFolder() / "orvanta-usbtool", getppid())) {}

std::string LinuxSystem::tableProblem() {
    return table_.problem;
}

std::optional<std::string> LinuxSystem::targetOf(char letter) {
    if (table_.folder.empty()) return std::nullopt;
    const std::string name = {static_cast<char>(letter - 'A' + 'a'), ':'};
    std::error_code error;
    const fs::path target = fs::canonical(table_.folder / name, error);
    if (error) return std::nullopt;
    return target.string();
}

std::optional<Volume> LinuxSystem::inspect(const std::string& node) {
    const auto number = deviceNumber(node);
    if (!number) return std::nullopt;
    auto volume = readFacts(folders_, major(*number), minor(*number));
    if (volume) volume->stableNode = stableNode(*volume);
    return volume;
}

std::optional<Volume> LinuxSystem::firstPartitionOf(const Volume& disk) {
    const auto deadline = std::chrono::steady_clock::now() + partitionDeadline;
    do {
        auto partition = inspect(firstPartitionNode(disk.diskNode));
        if (partition && partition->isReadyPartitionOf(disk)) return partition;
        if (partition && udevHasNamed(folders_, *partition)) return std::nullopt;
        std::this_thread::sleep_for(partitionPause);
    } while (std::chrono::steady_clock::now() < deadline);
    return std::nullopt;
}

std::uint64_t LinuxSystem::bytesWritten(const Volume& volume) {
    const auto number = deviceNumber(volume.node);
    return number ? readBytesWritten(folders_, major(*number), minor(*number)) : 0;
}

bool LinuxSystem::isRoot() {
    return geteuid() == 0;
}

/// The folders of administration are not on every user's path.
std::optional<std::string> LinuxSystem::findTool(const std::string& name) {
    std::string folders = variable("PATH") + ":/usr/local/sbin:/usr/sbin:/sbin:";
    for (std::size_t end = folders.find(':'); end != std::string::npos; end = folders.find(':')) {
        const std::string file = folders.substr(0, end) + '/' + name;
        folders.erase(0, end + 1);
        std::error_code error; // the folder of another user tells nothing
        if (!file.starts_with('/') || !fs::is_regular_file(file, error)) continue;
        if (access(file.c_str(), X_OK) == 0) return file;
    }
    return std::nullopt;
}

/// What the desktop has mounted for the user, its own helper lets the user unmount.
bool LinuxSystem::unmount(const std::string& place) {
    if (isRoot()) return umount2(place.c_str(), UMOUNT_NOFOLLOW) == 0;
    const auto tool = findTool("umount");
    return tool && run({*tool, place}, {}, [] {}).status == 0;
}

void LinuxSystem::settle() {
    sync();
}

void LinuxSystem::print(const std::string& text) {
    std::cout << text << std::flush;
}

std::optional<std::string> LinuxSystem::readLine() {
    std::string line;
    if (!std::getline(std::cin, line)) return std::nullopt;
    if (line.ends_with('\r')) line.pop_back();
    return line;
}

} // namespace fat32format
