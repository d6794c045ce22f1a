#include "tools/fat32format/linux/held_device.h"

#include "platform/linux/base/device_io.h"
#include "tools/fat32format/linux/signatures.h"
#include "tools/fat32format/linux/udisks_access.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace fat32format {

namespace {

/// Of the disk that the device belongs to; no value when it is gone, or the kernel does not number disks.
std::optional<std::uint64_t> sequenceOf(int device) {
    std::uint64_t sequence = 0;
    if (ioctl(device, BLKGETDISKSEQ, &sequence) != 0) return std::nullopt; // NOLINT(*-vararg)
    return sequence;
}

std::uint64_t bytesOf(int device) {
    std::uint64_t bytes = 0;
    return ioctl(device, BLKGETSIZE64, &bytes) == 0 ? bytes : 0; // NOLINT(*-vararg)
}

std::optional<dev_t> numberOf(int device) {
    struct stat info {};
    if (fstat(device, &info) != 0 || !S_ISBLK(info.st_mode)) return std::nullopt;
    return info.st_rdev;
}

} // namespace

bool HeldDevice::isDevice(std::uint64_t number) const {
    const auto own = numberOf(volume());
    return own && ((std::uint64_t{major(*own)} << 32U) | minor(*own)) == number;
}

/// The serial number is known by the device's number alone; the sequence number tells that it is the same
/// disk's.
std::optional<DiskIdentity> HeldDevice::identity() {
    const auto number = numberOf(disk_.get());
    const auto sequence = sequenceOf(disk_.get());
    if (!number || !sequence || sequenceOf(volume()) != sequence) return std::nullopt;
    const auto facts = readFacts(folders_, major(*number), minor(*number));
    if (!facts || facts->isPartition || facts->diskSequence != *sequence) return std::nullopt;
    return DiskIdentity{*sequence, bytesOf(disk_.get()), facts->serial};
}

std::uint64_t HeldDevice::bytes() {
    return bytesOf(volume());
}

std::optional<std::vector<Signature>> HeldDevice::signatures() {
    return readSignatures(volume(), bytesOf(volume()));
}

std::optional<std::vector<Signature>> HeldDevice::diskSignatures() {
    return readSignatures(disk_.get(), bytesOf(disk_.get()));
}

bool HeldDevice::read(std::uint64_t offset, std::span<unsigned char> bytes) {
    return platform::linux::readAt(volume(), offset, bytes);
}

bool HeldDevice::write(std::uint64_t offset, std::span<const unsigned char> bytes) {
    return platform::linux::writeAt(volume(), offset, bytes);
}

/// What the system keeps in memory is given up, as far as it can be.
bool HeldDevice::flush() {
    if (fsync(volume()) != 0) return false;
    return posix_fadvise(volume(), 0, 0, POSIX_FADV_DONTNEED) == 0;
}

/// The kernel lets root have the table read.
void HeldDevice::tableHasChanged() {
    tableIsOld_ = ioctl(disk_.get(), BLKRRPART) != 0; // NOLINT(*-vararg)
}

/// For anybody else udev sees to it when a disk that was open for writing is closed, unless it is at work on
/// the disk just then. So the service is asked, which waits for its turn; nobody else may hold the disk
/// meanwhile.
HeldDevice::~HeldDevice() {
    if (!tableIsOld_) return;
    partition_.close();
    disk_.close();
    rescanThroughUdisks(node_);
}

} // namespace fat32format
