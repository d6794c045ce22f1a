#include "tools/fat32format/windows/volume_facts.h"

#include "base/trim.h"
#include "platform/windows/ansi_text.h"
#include "platform/windows/storage_device.h"
#include "platform/windows/wide_text.h"

#include <algorithm>
#include <cstring>

namespace fat32format {

const GUID basicData = {0xEBD0A0A2, 0xB9E5, 0x4433, {0x87, 0xC0, 0x68, 0xB6, 0xB7, 0x26, 0x99, 0xC7}};

namespace {

using platform::windows::narrow;
using platform::windows::StorageTexts;
using platform::windows::utf8FromAnsi;

constexpr GUID dynamicMetadata = {
    0x5808C8AA, 0x7E8F, 0x42E0, {0x85, 0xD2, 0xE1, 0xE9, 0x04, 0x34, 0xCF, 0xB3}};
constexpr GUID dynamicData = {0xAF9B60A0, 0x1431, 0x4F62, {0xBC, 0x68, 0x33, 0x11, 0x71, 0x4A, 0x69, 0xAD}};
constexpr BYTE dynamicMbr = 0x42;
constexpr DWORD64 gptReadOnly = 0x1000'0000'0000'0000; // GPT_BASIC_DATA_ATTRIBUTE_READ_ONLY
constexpr std::size_t mostExtents = 64;
constexpr std::size_t mostPartitions = 256;
constexpr int bitsOfExchanges = 32;

/// Room for a structure that ends in an array of one.
template <typename Head, typename Entry>
std::vector<char> roomFor(std::size_t entries) {
    return std::vector<char>(sizeof(Head) + entries * sizeof(Entry));
}

/// The entries of such a structure's answer, as many as are there in full.
template <typename Entry>
std::vector<Entry> entriesOf(const std::vector<char>& room, std::size_t size, std::size_t place,
                             std::size_t count) {
    const std::size_t complete = size < place ? 0 : (size - place) / sizeof(Entry);
    std::vector<Entry> entries(std::min(count, complete));
    if (!entries.empty()) std::memcpy(entries.data(), room.data() + place, entries.size() * sizeof(Entry));
    return entries;
}

std::optional<std::vector<PARTITION_INFORMATION_EX>> partitionsOf(Device& disk) {
    auto room = roomFor<DRIVE_LAYOUT_INFORMATION_EX, PARTITION_INFORMATION_EX>(mostPartitions);
    const Answer answer = disk.control(IOCTL_DISK_GET_DRIVE_LAYOUT_EX, {}, room);
    DRIVE_LAYOUT_INFORMATION_EX head{};
    constexpr std::size_t place = offsetof(DRIVE_LAYOUT_INFORMATION_EX, PartitionEntry);
    if (!answer || answer.size < place) return std::nullopt;
    std::memcpy(&head, room.data(), place);
    auto entries =
        entriesOf<PARTITION_INFORMATION_EX>(room, answer.size, place, std::size_t{head.PartitionCount});
    if (entries.size() != head.PartitionCount) return std::nullopt;
    return entries;
}

/// How the disk is connected, and what its manufacturer calls it.
struct Descriptor {
    STORAGE_BUS_TYPE bus = BusTypeUnknown;
    StorageTexts texts;
};

std::optional<Descriptor> descriptorOf(Device& disk) {
    STORAGE_PROPERTY_QUERY query{};
    query.PropertyId = StorageDeviceProperty;
    query.QueryType = PropertyStandardQuery;
    std::vector<char> room(4096);
    const Answer answer = disk.control(IOCTL_STORAGE_QUERY_PROPERTY,
                                       {reinterpret_cast<const char*>(&query), sizeof query}, room);
    STORAGE_DEVICE_DESCRIPTOR descriptor{};
    if (!answer || answer.size < sizeof descriptor) return std::nullopt;
    std::memcpy(&descriptor, room.data(), sizeof descriptor);
    return Descriptor{descriptor.BusType,
                      platform::windows::storageTexts(std::span(room).first(answer.size))};
}

/// Texts of devices are filled up with spaces at either end.
std::string trimmed(const std::string& text) {
    return utf8FromAnsi(base::trim(text));
}

std::string modelOf(const StorageTexts& texts) {
    const std::string maker = trimmed(texts.maker);
    const std::string model = trimmed(texts.model);
    return maker.empty() || model.empty() ? maker + model : maker + ' ' + model;
}

std::uint64_t bytesOf(const LARGE_INTEGER& number) {
    return number.QuadPart < 0 ? 0 : static_cast<std::uint64_t>(number.QuadPart);
}

struct Geometry {
    std::uint64_t diskBytes = 0;
    std::uint32_t sectorSize = 0;
};

/// What stands behind the size is not needed, and not every disk tells it.
/// https://learn.microsoft.com/windows/win32/api/winioctl/ns-winioctl-disk_geometry_ex
std::optional<Geometry> geometryOf(Device& disk) {
    std::vector<char> room(512);
    const Answer answer = disk.control(IOCTL_DISK_GET_DRIVE_GEOMETRY_EX, {}, room);
    DISK_GEOMETRY_EX geometry{};
    constexpr std::size_t needed = offsetof(DISK_GEOMETRY_EX, Data);
    if (!answer || answer.size < needed) return std::nullopt;
    std::memcpy(&geometry, room.data(), needed);
    const Geometry found{bytesOf(geometry.DiskSize), geometry.Geometry.BytesPerSector};
    if (found.diskBytes == 0 || found.sectorSize == 0) return std::nullopt;
    return found;
}

bool meansNoMedium(DWORD error) {
    return error == ERROR_NOT_READY || error == ERROR_NO_MEDIA_IN_DRIVE;
}

struct Medium {
    DWORD error = ERROR_SUCCESS; ///< why it cannot be told
    ULONG exchanges = 0;         ///< how often it was another one; 0 for disks that do not count
};

/// https://learn.microsoft.com/windows/win32/api/winioctl/ni-winioctl-ioctl_storage_check_verify2
Medium mediumOf(Device& volume) {
    Medium medium;
    ULONG count = 0;
    const Answer answer =
        volume.control(IOCTL_STORAGE_CHECK_VERIFY2, {}, {reinterpret_cast<char*>(&count), sizeof count});
    medium.error = answer.error;
    if (answer && answer.size == sizeof count) medium.exchanges = count;
    return medium;
}

/// Fills a volume; the first thing that cannot be told ends it, and is named.
class VolumeReader {
public:
    VolumeReader(Machine& machine, char letter) : machine_(machine), letter_(letter) {
        found_.node = {letter, ':'};
    }

    std::optional<Volume> read() {
        const std::wstring target = machine_.targetOf(letter_);
        if (!mayBeDisk(machine_.driveType(letter_), target)) return std::nullopt;
        OpenedDevice opened = machine_.open(volumeName(letter_), Rights::Ask);
        if (meansNoMedium(opened.error)) return found_;
        if (opened.error == ERROR_FILE_NOT_FOUND) return std::nullopt;
        if (!opened.device) return untold("the volume");
        volume_ = std::move(opened.device);
        const Medium medium = mediumOf(*volume_);
        if (meansNoMedium(medium.error)) return found_;
        if (medium.error != ERROR_SUCCESS) return untold("the medium");
        found_.label = machine_.labelOf(letter_);
        if (!readPlace()) return found_;
        openDisk();
        if (readSystemUse(target) && readDisk() && readPartition()) readProtection();
        return found_;
    }

private:
    /// A letter that stands for a folder, as "subst" makes one, has another beginning. Windows tells "no
    /// root" of volumes that it has no root folder of: what it has says more than that.
    static bool mayBeDisk(UINT type, const std::wstring& target) {
        const bool isKind = type == DRIVE_REMOVABLE || type == DRIVE_FIXED || type == DRIVE_NO_ROOT_DIR;
        return isKind && target.starts_with(L"\\Device\\");
    }

    Volume untold(const char* what) {
        found_.unreadable = what;
        return found_;
    }

    bool fail(const char* what) {
        untold(what);
        return false;
    }

    bool readPlace() {
        const auto extents = extentsOf(*volume_);
        if (!extents || extents->empty()) return fail("its place on the disk");
        extents_ = *extents;
        for (const DISK_EXTENT& extent : extents_)
            found_.bytes += bytesOf(extent.ExtentLength);
        found_.start = bytesOf(extents_.front().StartingOffset);
        if (found_.bytes == 0) return fail("its place on the disk");
        found_.isPartition = found_.start > 0;
        found_.diskNode = "disk " + std::to_string(extents_.front().DiskNumber);
        return true;
    }

    /// Also of a disk that is refused for something else.
    void openDisk() {
        disk_ = machine_.open(diskName(extents_.front().DiskNumber), Rights::Ask).device;
        if (const auto identity = disk_ ? identityOf(*volume_, *disk_) : std::nullopt) {
            found_.diskSequence = identity->sequence;
            found_.diskBytes = identity->bytes;
            found_.serial = identity->serial;
        }
    }

    /// All of a disk on which the system has anything is the system's.
    bool readSystemUse(const std::wstring& target) {
        const auto volumes = machine_.systemVolumes();
        if (!volumes) return fail("which volumes Windows uses");
        for (const std::wstring& name : *volumes) {
            found_.systemUse = found_.systemUse || name == volumeName(letter_) || name.ends_with(target);
            const OpenedDevice opened = machine_.open(name, Rights::Ask);
            const auto extents = opened.device ? extentsOf(*opened.device) : std::nullopt;
            if (!extents || extents->empty()) return found_.systemUse || failAt(name);
            for (const DISK_EXTENT& theirs : *extents)
                found_.systemUse = found_.systemUse || usesDisk(theirs.DiskNumber);
        }
        return true;
    }

    bool failAt(const std::wstring& name) {
        found_.unreadable = "the place of " + narrow(name) + ", which Windows or this program uses,";
        return false;
    }

    bool usesDisk(DWORD number) const {
        return std::any_of(extents_.begin(), extents_.end(),
                           [number](const DISK_EXTENT& ours) { return ours.DiskNumber == number; });
    }

    bool readDisk() {
        if (extents_.size() > 1) return isPartOf("a volume on several disks");
        if (!disk_) return fail("its disk");
        const auto descriptor = descriptorOf(*disk_);
        if (!descriptor) return fail("how its disk is connected");
        found_.model = modelOf(descriptor->texts);
        found_.onUsb = descriptor->bus == BusTypeUsb;
        if (descriptor->bus == BusTypeSpaces) return isPartOf("a storage space");
        if (!readPartitions()) return false; // a volume of a dynamic disk does not tell which disk it is on
        return found_.diskBytes > 0 ? readNames() : fail("which disk it is on");
    }

    bool isPartOf(const char* set) {
        found_.set = set;
        return false;
    }

    bool readPartitions() {
        const auto partitions = partitionsOf(*disk_);
        if (!partitions) return fail("the partitions of its disk");
        if (std::any_of(partitions->begin(), partitions->end(), isDynamicType))
            return isPartOf("a dynamic disk");
        found_.diskHasPartitions =
            std::any_of(partitions->begin(), partitions->end(), [](const PARTITION_INFORMATION_EX& one) {
                return bytesOf(one.PartitionLength) > 0 && bytesOf(one.StartingOffset) > 0;
            });
        return true;
    }

    bool readNames() {
        const auto number = volume_->ask<STORAGE_DEVICE_NUMBER>(IOCTL_STORAGE_GET_DEVICE_NUMBER);
        const auto geometry = geometryOf(*disk_);
        if (!number || !geometry) return fail("the length of its sectors");
        found_.sectorSize = geometry->sectorSize;
        found_.deviceNumber =
            (std::uint64_t{number->DeviceNumber} << bitsOfExchanges) | number->PartitionNumber;
        found_.shownNode = found_.isPartition
                               ? std::to_string(number->PartitionNumber) + " of " + found_.diskNode
                               : found_.diskNode;
        return true;
    }

    bool readPartition() {
        const auto partition = volume_->ask<PARTITION_INFORMATION_EX>(IOCTL_DISK_GET_PARTITION_INFO_EX);
        if (!partition) return fail("its partition");
        if (bytesOf(partition->StartingOffset) != found_.start) return fail("where its partition begins");
        if (partition->PartitionStyle == PARTITION_STYLE_GPT && partition->Gpt.PartitionType == basicData)
            found_.readOnly = (partition->Gpt.Attributes & gptReadOnly) != 0;
        return true;
    }

    /// https://learn.microsoft.com/windows/win32/api/winioctl/ni-winioctl-ioctl_disk_is_writable
    void readProtection() {
        const Answer answer = volume_->control(IOCTL_DISK_IS_WRITABLE);
        if (answer.error == ERROR_WRITE_PROTECT)
            found_.readOnly = true;
        else if (!answer)
            fail("whether it is write-protected");
    }

    Machine& machine_;
    char letter_;
    std::unique_ptr<Device> volume_;
    std::unique_ptr<Device> disk_;
    std::vector<DISK_EXTENT> extents_;
    Volume found_;
};

} // namespace

std::wstring volumeName(wchar_t letter) {
    return {L'\\', L'\\', L'.', L'\\', letter, L':'};
}

std::wstring diskName(DWORD number) {
    return L"\\\\.\\PhysicalDrive" + std::to_wstring(number);
}

std::optional<std::vector<DISK_EXTENT>> extentsOf(Device& volume) {
    auto room = roomFor<VOLUME_DISK_EXTENTS, DISK_EXTENT>(mostExtents);
    const Answer answer = volume.control(IOCTL_VOLUME_GET_VOLUME_DISK_EXTENTS, {}, room);
    DWORD count = 0;
    if (!answer || answer.size < sizeof count) return std::nullopt;
    std::memcpy(&count, room.data(), sizeof count);
    auto extents = entriesOf<DISK_EXTENT>(room, answer.size, offsetof(VOLUME_DISK_EXTENTS, Extents), count);
    if (extents.size() != count) return std::nullopt;
    return extents;
}

std::optional<DISK_EXTENT> pieceOf(Device& volume) {
    const auto extents = extentsOf(volume);
    if (!extents || extents->size() != 1) return std::nullopt;
    return extents->front();
}

std::optional<DiskIdentity> identityOf(Device& volume, Device& disk) {
    const auto descriptor = descriptorOf(disk);
    const auto geometry = geometryOf(disk);
    const auto own = disk.ask<STORAGE_DEVICE_NUMBER>(IOCTL_STORAGE_GET_DEVICE_NUMBER);
    // The volume last: one that answers has not been pulled while the disk was asked.
    const Medium medium = mediumOf(volume);
    const auto number = volume.ask<STORAGE_DEVICE_NUMBER>(IOCTL_STORAGE_GET_DEVICE_NUMBER);
    const auto piece = pieceOf(volume);
    if (!descriptor || !geometry || !own || medium.error != ERROR_SUCCESS || !number || !piece)
        return std::nullopt;
    const bool isOnIt = number->DeviceType == FILE_DEVICE_DISK && own->DeviceType == FILE_DEVICE_DISK &&
                        number->DeviceNumber == own->DeviceNumber && piece->DiskNumber == own->DeviceNumber;
    if (!isOnIt) return std::nullopt;
    const std::uint64_t sequence =
        ((std::uint64_t{own->DeviceNumber} + 1) << bitsOfExchanges) | medium.exchanges;
    return DiskIdentity{sequence, geometry->diskBytes, trimmed(descriptor->texts.serial)};
}

DiskIdentity identityBehind(Machine& machine, char letter) {
    const OpenedDevice volume = machine.open(volumeName(letter), Rights::Ask);
    const auto piece = volume.device ? pieceOf(*volume.device) : std::nullopt;
    if (!piece) return {};
    const OpenedDevice disk = machine.open(diskName(piece->DiskNumber), Rights::Ask);
    const auto identity = disk.device ? identityOf(*volume.device, *disk.device) : std::nullopt;
    return identity.value_or(DiskIdentity());
}

std::optional<Volume> readVolume(Machine& machine, char letter) {
    return VolumeReader(machine, letter).read();
}

bool isDynamicType(const PARTITION_INFORMATION_EX& partition) {
    if (partition.PartitionStyle == PARTITION_STYLE_MBR) return partition.Mbr.PartitionType == dynamicMbr;
    return partition.PartitionStyle == PARTITION_STYLE_GPT &&
           (partition.Gpt.PartitionType == dynamicMetadata || partition.Gpt.PartitionType == dynamicData);
}

} // namespace fat32format
