#include "tools/fat32format/windows/held_windows_volume.h"

#include "tools/fat32format/volume_marks.h"
#include "tools/fat32format/windows/volume_facts.h"

#include <winioctl.h>

namespace fat32format {

namespace {

constexpr BYTE fat32Lba = 0x0C;
constexpr int lockTries = 15;
constexpr std::chrono::milliseconds lockPause(200); // an indexer or a virus scanner reads what is plugged in

std::string because(const char* what, DWORD error) {
    return std::string(what) + " (error " + std::to_string(error) + ")";
}

Opened notOpened(Opened::Outcome outcome, std::string reason) {
    return {outcome, nullptr, std::move(reason)};
}

Opened notOpened(const char* what, DWORD error) {
    if (error == ERROR_ACCESS_DENIED) return notOpened(Opened::Outcome::NotAllowed, because(what, error));
    if (error == ERROR_SHARING_VIOLATION) return notOpened(Opened::Outcome::InUse, because(what, error));
    return notOpened(Opened::Outcome::Failed, because(what, error));
}

/// Windows' own caches let go within moments; a file that a program has open does not.
bool lock(Machine& machine, Device& volume) {
    for (int i = 0; i < lockTries; ++i) {
        if (i > 0) machine.rest(lockPause);
        if (volume.control(FSCTL_LOCK_VOLUME)) return true;
    }
    return false;
}

std::string whatToClose(Machine& machine, char letter) {
    std::string names;
    for (const std::string& name : machine.usersOf(letter))
        names += (names.empty() ? "" : ", ") + name;
    if (!names.empty()) return "Please close: " + names + ".";
    return std::string("Please close all windows and programs that use drive ") + letter + ":.";
}

/// The type of a partition that may hold FAT32; no value when it has that already.
std::optional<SET_PARTITION_INFORMATION_EX> neededType(const PARTITION_INFORMATION_EX& now) {
    SET_PARTITION_INFORMATION_EX wanted{};
    wanted.PartitionStyle = now.PartitionStyle;
    if (now.PartitionStyle == PARTITION_STYLE_MBR) {
        if (now.Mbr.PartitionType == fat32Lba) return std::nullopt;
        wanted.Mbr.PartitionType = fat32Lba;
    } else {
        if (now.Gpt.PartitionType == basicData) return std::nullopt;
        wanted.Gpt = now.Gpt;
        wanted.Gpt.PartitionType = basicData;
    }
    return wanted;
}

} // namespace

HeldWindowsVolume::~HeldWindowsVolume() {
    volume_->control(FSCTL_UNLOCK_VOLUME);
    volume_.reset();
    disk_.reset();
    if (isDismounted_) machine_.announce(place_.letter);
}

std::optional<DiskIdentity> HeldWindowsVolume::identity() {
    const auto piece = pieceOf(*volume_);
    if (!piece || static_cast<std::uint64_t>(piece->StartingOffset.QuadPart) != place_.start)
        return std::nullopt;
    return identityOf(*volume_, *disk_);
}

/// Two of Windows' answers have to agree on it: nothing is written behind the end of either.
std::uint64_t HeldWindowsVolume::bytes() {
    const auto piece = pieceOf(*volume_);
    const auto length = volume_->ask<GET_LENGTH_INFORMATION>(IOCTL_DISK_GET_LENGTH_INFO);
    if (!piece || !length || length->Length.QuadPart < piece->ExtentLength.QuadPart) return 0;
    return static_cast<std::uint64_t>(piece->ExtentLength.QuadPart);
}

std::optional<std::vector<Signature>> HeldWindowsVolume::signatures() {
    std::vector<unsigned char> sector(place_.sectorSize);
    if (!volume_->read(0, sector)) return std::nullopt;
    const std::string name = fileSystemName(sector);
    if (name.empty()) return std::vector<Signature>();
    return std::vector<Signature>{{name, false}};
}

bool HeldWindowsVolume::read(std::uint64_t offset, std::span<unsigned char> bytes) {
    return volume_->read(offset, bytes);
}

bool HeldWindowsVolume::write(std::uint64_t offset, std::span<const unsigned char> bytes) {
    return dismount() && volume_->write(offset, bytes);
}

/// FAT's driver flushes no volume that it has dismounted. There is nothing of it in memory by then, since all
/// of it is written through; what the disk itself keeps back, the disk is told to write.
bool HeldWindowsVolume::flush() {
    return volume_->flush() || (isDismounted_ && disk_->flush());
}

/// What the old file system still had in memory must not be written over the new one. A disk that cannot be
/// flushed then is found out while it still holds what it held.
/// https://learn.microsoft.com/windows/win32/api/winioctl/ni-winioctl-fsctl_dismount_volume
bool HeldWindowsVolume::dismount() {
    if (!isDismounted_) {
        isDismounted_ = static_cast<bool>(volume_->control(FSCTL_DISMOUNT_VOLUME));
        isReady_ = isDismounted_ && flush();
    }
    return isReady_;
}

void HeldWindowsVolume::tableHasChanged() {
    disk_->control(IOCTL_DISK_UPDATE_PROPERTIES);
}

/// Windows finds a file system whatever the type is; other devices do not.
/// https://learn.microsoft.com/windows/win32/api/winioctl/ni-winioctl-ioctl_disk_set_partition_info_ex
bool HeldWindowsVolume::setPartitionType() {
    const auto now = volume_->ask<PARTITION_INFORMATION_EX>(IOCTL_DISK_GET_PARTITION_INFO_EX);
    const bool hasTable =
        now && (now->PartitionStyle == PARTITION_STYLE_MBR || now->PartitionStyle == PARTITION_STYLE_GPT);
    if (!hasTable) return false;
    const auto wanted = neededType(*now);
    if (!wanted) return true;
    if (!volume_->tell(IOCTL_DISK_SET_PARTITION_INFO_EX, *wanted)) return false;
    const auto then = volume_->ask<PARTITION_INFORMATION_EX>(IOCTL_DISK_GET_PARTITION_INFO_EX);
    return then && then->PartitionStyle == now->PartitionStyle && !neededType(*then);
}

/// The mark of BitLocker is read first: a volume that is encrypted and not unlocked opens for nobody.
Opened openAlone(Machine& machine, char letter, const Volume& volume) {
    const OpenedDevice look = machine.open(volumeName(letter), Rights::Ask);
    if (!look.device) return notOpened("The volume is gone.", look.error);
    const auto piece = pieceOf(*look.device);
    if (!piece) return notOpened(Opened::Outcome::Failed, "Where it lies cannot be told.");
    OpenedDevice disk = machine.open(diskName(piece->DiskNumber), Rights::Write); // to flush it
    if (!disk.device) return notOpened("Its disk cannot be opened.", disk.error);
    std::vector<unsigned char> sector(volume.sectorSize);
    if (!disk.device->read(volume.start, sector))
        return notOpened(Opened::Outcome::Failed, "Its first sector cannot be read.");
    if (isBitLocker(sector)) return notOpened(Opened::Outcome::Encrypted, "BitLocker");
    OpenedDevice held = machine.open(volumeName(letter), Rights::Write);
    if (!held.device) return notOpened("The volume cannot be written to.", held.error);
    if (!lock(machine, *held.device)) return notOpened(Opened::Outcome::InUse, whatToClose(machine, letter));
    // For what lies behind the end of the file system; there may be none, which knows no such question.
    // Whether the end can be reached shows now, not when the beginning has been written to.
    held.device->control(FSCTL_ALLOW_EXTENDED_DASD_IO);
    if (!held.device->read(volume.bytes - volume.sectorSize, sector))
        return notOpened(Opened::Outcome::Failed, "Its last sector cannot be reached.");
    const HeldWindowsVolume::Place place{letter, volume.start, volume.sectorSize};
    return {
        Opened::Outcome::Done,
        std::make_unique<HeldWindowsVolume>(machine, place, std::move(held.device), std::move(disk.device)),
        {}};
}

} // namespace fat32format
