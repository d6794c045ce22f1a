#include "tools/fat32format/linux/linux_system.h"

#include "platform/linux/base/runtime_folder.h"
#include "tools/fat32format/linux/held_device.h"
#include "tools/fat32format/linux/udisks_access.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <iostream>
#include <random>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace fat32format {

namespace {

namespace fs = std::filesystem;
using namespace platform::linux;

/// The program may run as the user who has started the formatter by pkexec, which hands on nothing but who
/// that is; or as root, as the formatter itself does.
LinkTable tableOfDrives() {
    const fs::path name = "orvanta-usbtool";
    std::optional<TablePlace> caller;
    if (const auto user = userBehindPkexec()) caller = TablePlace{usualRuntimeFolder(*user) / name, *user};
    return findLinkTable({runtimeFolder() / name, geteuid()}, caller, getppid());
}

std::optional<dev_t> deviceNumber(const std::string& node) {
    struct stat info {};
    if (stat(node.c_str(), &info) != 0 || !S_ISBLK(info.st_mode)) return std::nullopt;
    return info.st_rdev;
}

OpenedNode openNode(const std::string& node, int flags) {
    UniqueFd device(open(node.c_str(), flags | O_CLOEXEC | O_NONBLOCK)); // NOLINT(*-vararg)
    if (device) return {Opened::Outcome::Done, std::move(device), {}};
    if (errno == EACCES || errno == EPERM) return openThroughUdisks(node, flags);
    const auto outcome = errno == EBUSY ? Opened::Outcome::InUse : Opened::Outcome::Failed;
    return {outcome, {}, std::strerror(errno)}; // NOLINT(concurrency-mt-unsafe): one thread
}

} // namespace

LinuxSystem::LinuxSystem() : table_(tableOfDrives()) {}

std::string LinuxSystem::tableProblem() {
    return table_.problem();
}

std::optional<Target> LinuxSystem::targetOf(char letter) {
    return table_.target(letter);
}

std::optional<Volume> LinuxSystem::inspect(const std::string& node) {
    const auto number = deviceNumber(node);
    if (!number) return std::nullopt;
    return readFacts(folders_, major(*number), minor(*number));
}

std::string LinuxSystem::systemsOwn() {
    return "What is mounted outside of /media, /run/media and /mnt, swap space, "
           "and volume groups and encrypted volumes in use are not touched.";
}

/// Whoever has the whole disk for itself has its partitions as well: in every namespace nothing of it can be
/// mounted, or be a part of something else. A partition is written through a descriptor of its own, since
/// udev lets go of all partitions of a disk, and finds them anew, when one that wrote to the disk closes it.
Opened LinuxSystem::open(const Volume& volume, Access access) {
    const bool alone = access == Access::Alone;
    const int reading = O_RDONLY;
    const int writing = alone ? O_RDWR : O_RDONLY;
    OpenedNode disk =
        openNode(volume.diskNode, (volume.isPartition ? reading : writing) | (alone ? O_EXCL : 0));
    if (disk.outcome != Opened::Outcome::Done) return {disk.outcome, nullptr, disk.reason};
    OpenedNode partition;
    if (volume.isPartition) partition = openNode(volume.node, writing);
    if (volume.isPartition && partition.outcome != Opened::Outcome::Done)
        return {partition.outcome, nullptr, partition.reason};
    auto held = std::make_unique<HeldDevice>(folders_, volume.diskNode, std::move(disk.device),
                                             std::move(partition.device));
    if (!held->isDevice(volume.deviceNumber)) return {Opened::Outcome::Failed, nullptr, {}};
    return {Opened::Outcome::Done, std::move(held), {}};
}

/// What the desktop has mounted for the user, it lets the user unmount.
bool LinuxSystem::unmount(const Mount& mount) {
    if (geteuid() == 0) return umount2(mount.place.c_str(), UMOUNT_NOFOLLOW) == 0;
    return unmountThroughUdisks(mount.node);
}

std::uint32_t LinuxSystem::randomNumber() {
    return std::random_device()();
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
