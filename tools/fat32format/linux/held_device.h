#pragma once

#include "platform/linux/base/unique_fd.h"
#include "tools/fat32format/linux/disk_facts.h"
#include "tools/fat32format/system.h"

#include <string>

namespace fat32format {

/// By two descriptors: the disk's, which keeps others away, and the volume's. They are one when the volume is
/// the whole disk.
class HeldDevice : public HeldVolume {
public:
    /// Without a descriptor of its own the volume is the disk, which has that device node.
    HeldDevice(FactFolders folders, std::string node, platform::linux::UniqueFd disk,
               platform::linux::UniqueFd partition)
        : folders_(std::move(folders)),
          node_(std::move(node)),
          disk_(std::move(disk)),
          partition_(std::move(partition)) {}
    HeldDevice(const HeldDevice&) = delete;
    HeldDevice& operator=(const HeldDevice&) = delete;
    ~HeldDevice() override;

    /// Whether the volume's descriptor is that of the device with the number.
    bool isDevice(std::uint64_t number) const;

    std::optional<DiskIdentity> identity() override;
    std::uint64_t bytes() override;
    std::optional<std::vector<Signature>> signatures() override;
    std::optional<std::vector<Signature>> diskSignatures() override;
    bool read(std::uint64_t offset, std::span<unsigned char> bytes) override;
    bool write(std::uint64_t offset, std::span<const unsigned char> bytes) override;
    bool flush() override;
    void tableHasChanged() override;
    /// Linux tells a file system by what it holds, and leaves the table to whoever made it.
    bool setPartitionType() override { return true; }

private:
    int volume() const { return partition_ ? partition_.get() : disk_.get(); }

    FactFolders folders_;
    std::string node_;
    platform::linux::UniqueFd disk_;
    platform::linux::UniqueFd partition_;
    bool tableIsOld_ = false; ///< what the kernel knows of the disk's table
};

} // namespace fat32format
