#pragma once

#include "tools/fat32format/system.h"
#include "tools/fat32format/windows/device.h"

namespace fat32format {

/// A volume by its own open device, which has it locked, and the disk's, which is never written to. Nothing
/// is changed before the first writing; then the volume is dismounted. The lock goes with it.
/// https://learn.microsoft.com/windows/win32/api/winioctl/ni-winioctl-fsctl_lock_volume
class HeldWindowsVolume : public HeldVolume {
public:
    struct Place {
        char letter = 0;
        std::uint64_t start = 0;        ///< of the volume on the disk, in bytes
        std::uint32_t sectorSize = 512; ///< bytes
    };

    HeldWindowsVolume(Machine& machine, Place place, std::unique_ptr<Device> volume,
                      std::unique_ptr<Device> disk)
        : machine_(machine), place_(place), volume_(std::move(volume)), disk_(std::move(disk)) {}
    ~HeldWindowsVolume() override;

    std::optional<DiskIdentity> identity() override;
    std::uint64_t bytes() override;
    std::optional<std::vector<Signature>> signatures() override;
    /// What lies beside partitions, Windows does not use but on dynamic disks, which are told by their type.
    std::optional<std::vector<Signature>> diskSignatures() override { return std::vector<Signature>(); }
    bool read(std::uint64_t offset, std::span<unsigned char> bytes) override;
    bool write(std::uint64_t offset, std::span<const unsigned char> bytes) override;
    bool flush() override;
    void tableHasChanged() override;
    bool setPartitionType() override;

private:
    bool dismount();

    Machine& machine_;
    Place place_;
    std::unique_ptr<Device> volume_;
    std::unique_ptr<Device> disk_;
    bool isDismounted_ = false;
    bool isReady_ = false; ///< to be written to
};

/// Opens a volume that has been looked at, for nobody else.
Opened openAlone(Machine& machine, char letter, const Volume& volume);

} // namespace fat32format
