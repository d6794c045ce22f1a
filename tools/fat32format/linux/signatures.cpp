#include "tools/fat32format/linux/signatures.h"

#include "base/little_endian.h"
#include "platform/linux/base/device_io.h"

#include <algorithm>
#include <array>
#include <blkid/blkid.h>
#include <memory>
#include <span>
#include <string>
#include <utility>

namespace fat32format {

namespace {

using Probe = std::unique_ptr<blkid_struct_probe, void (*)(blkid_probe)>;

/// A property of what has just been found; empty when it has none of that name.
std::string property(blkid_probe probe, const char* name) {
    const char* text = nullptr;
    std::size_t size = 0;
    return blkid_probe_lookup_value(probe, name, &text, &size) == 0 ? text : std::string();
}

/// As people call it.
std::string shownName(const std::string& type) {
    static constexpr std::array<std::pair<const char*, const char*>, 8> names = {{
        {"crypto_LUKS", "LUKS"},
        {"LVM1_member", "LVM"},
        {"LVM2_member", "LVM"},
        {"linux_raid_member", "RAID"},
        {"zfs_member", "ZFS"},
        {"vfat", "FAT"},
        {"exfat", "exFAT"},
        {"ntfs", "NTFS"},
    }};
    const auto* const found =
        std::find_if(names.begin(), names.end(), [&type](const auto& name) { return type == name.first; });
    return found == names.end() ? type : found->second;
}

/// The number of devices that a btrfs says it has; no value when it cannot be read.
/// https://btrfs.readthedocs.io/en/latest/dev/On-disk-format.html, superblock
std::optional<std::uint64_t> btrfsDevices(int device) {
    constexpr std::uint64_t superblock = 65'536;
    constexpr std::uint64_t count = 0x88;
    std::array<unsigned char, 8> bytes = {};
    if (!platform::linux::readAt(device, superblock + count, bytes)) return std::nullopt;
    return base::littleEndian(bytes, 0, bytes.size());
}

/// The library's class "raid" is everything that is put together from several devices; what it calls "other"
/// serves another device (a cache, a journal), but for swap space.
std::optional<bool> isMember(int device, const std::string& type, const std::string& usage) {
    if (type == "btrfs") {
        const auto devices = btrfsDevices(device);
        return devices ? std::optional(*devices != 1) : std::nullopt;
    }
    const bool isSwap = type == "swap" || type == "swsuspend";
    return usage == "raid" || type.ends_with("_member") || (usage == "other" && !isSwap);
}

std::optional<Signature> foundSignature(blkid_probe probe, int device) {
    const std::string type = property(probe, "TYPE");
    if (type.empty()) return Signature{"Partitionstabelle (" + property(probe, "PTTYPE") + ')', false};
    const auto member = isMember(device, type, property(probe, "USAGE"));
    if (!member) return std::nullopt;
    return Signature{shownName(type), *member};
}

Probe makeProbe(int device, std::uint64_t bytes) {
    Probe probe(blkid_new_probe(), blkid_free_probe);
    if (!probe || blkid_probe_set_device(probe.get(), device, 0, static_cast<blkid_loff_t>(bytes)) != 0)
        return {nullptr, blkid_free_probe};
    blkid_probe_enable_superblocks(probe.get(), 1);
    blkid_probe_set_superblocks_flags(probe.get(), BLKID_SUBLKS_TYPE | BLKID_SUBLKS_USAGE |
                                                       BLKID_SUBLKS_MAGIC | BLKID_SUBLKS_BADCSUM);
    blkid_probe_enable_partitions(probe.get(), 1);
    return probe;
}

/// The library takes a place that it cannot read for one without a mark.
bool isReadable(int device, std::uint64_t bytes) {
    constexpr std::uint64_t edge = 131'072;
    std::array<std::uint8_t, edge / 2> piece = {};
    const auto canRead = [&](std::uint64_t begin, std::uint64_t end) {
        for (std::uint64_t at = begin; at < end; at += piece.size()) {
            const std::size_t count = std::min<std::uint64_t>(piece.size(), end - at);
            if (!platform::linux::readAt(device, at, std::span(piece).first(count))) return false;
        }
        return true;
    };
    const std::uint64_t first = std::min(edge, bytes);
    return canRead(0, first) && canRead(std::max(first, bytes - first), bytes);
}

} // namespace

std::optional<std::vector<Signature>> readSignatures(int device, std::uint64_t bytes) {
    if (bytes == 0 || !isReadable(device, bytes)) return std::nullopt;
    const Probe probe = makeProbe(device, bytes);
    if (!probe) return std::nullopt;
    std::vector<Signature> found;
    int result = 0;
    for (errno = 0; (result = blkid_do_probe(probe.get())) == 0;) {
        const auto signature = foundSignature(probe.get(), device);
        if (!signature) return std::nullopt;
        if (std::find(found.begin(), found.end(), *signature) == found.end()) found.push_back(*signature);
    }
    if (result < 0) return std::nullopt;
    return found;
}

} // namespace fat32format
