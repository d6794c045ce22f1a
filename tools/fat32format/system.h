// What the formatter needs of the system, and all it needs: with another one in its place nothing is
// formatted.
#pragma once

#include "tools/fat32format/disk_identity.h"

#include <cstdint>
#include <ctime>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace fat32format {

struct Mount {
    std::string node;  ///< the device that is mounted, "/dev/sdb1"
    std::string place; ///< the folder
    friend bool operator==(const Mount&, const Mount&) = default;
};

/// A volume, a partition or a whole disk, and the disk it lies on.
struct Volume {
    std::string node;     ///< its device, "/dev/sdb1"
    std::string diskNode; ///< the disk's device, "/dev/sdb"
    std::uint64_t deviceNumber = 0;
    std::uint64_t diskSequence =
        0;                    ///< which of all disks since the start of the system it is; 0 when not known
    std::string model;        ///< of the disk; may be empty
    std::string serial;       ///< of the disk, as the table of drives has it; may be empty
    std::string deviceSerial; ///< that the device itself tells; only to be shown
    std::uint64_t diskBytes = 0;
    std::uint64_t start = 0; ///< where it begins on the disk, in bytes
    std::uint64_t bytes = 0;
    std::uint32_t sectorSize = 512; ///< logical, in bytes
    std::string label; ///< of what the volume holds, UTF-8; empty when it has none, or none is known
    bool isPartition = false;
    bool diskHasPartitions = false;
    bool onUsb = false;
    bool readOnly = false;
    /// Something of the disk is mounted as part of the system, or in its use otherwise.
    bool systemUse = false;
    std::string set;           ///< what it is a part of together with other disks; empty when of nothing
    std::string shownNode;     ///< what people call it; empty when that is its device
    std::vector<Mount> mounts; ///< where the user has something of the disk mounted, in the order of mounting
    std::string unreadable;    ///< what could not be read of all this, the first of it; else empty

    /// Whether it is the same piece of the same disk, plugged in since.
    bool isSameAs(const Volume& other) const;
    DiskIdentity identity() const { return {diskSequence, diskBytes, serial}; }
    const std::string& shownSerial() const { return serial.empty() ? deviceSerial : serial; }
    const std::string& name() const { return shownNode.empty() ? node : shownNode; }
};

/// What a letter means in the table of drives.
struct Target {
    std::string node;                 ///< path of a device, or of a folder
    std::optional<DiskIdentity> disk; ///< that the user was shown; no value when the table does not tell
};

/// What a disk or a volume holds, by the mark that says so.
struct Signature {
    std::string name;      ///< fit to be shown
    bool isMember = false; ///< of something that has more devices, or belongs to another device
    friend bool operator==(const Signature&, const Signature&) = default;
};

/// A volume and its disk, held open: whatever is plugged in meanwhile, it is this one that is read and
/// written. Offsets count bytes from the beginning of the volume; offsets and lengths are whole sectors.
class HeldVolume {
public:
    HeldVolume() = default;
    HeldVolume(const HeldVolume&) = delete;
    HeldVolume& operator=(const HeldVolume&) = delete;
    virtual ~HeldVolume() = default;

    /// Of the disk that is open; no value when it is gone, or the volume is not on it.
    virtual std::optional<DiskIdentity> identity() = 0;
    /// Size of the volume that is open; 0 when it cannot be told.
    virtual std::uint64_t bytes() = 0;
    /// What the volume holds; no value when it cannot be read.
    virtual std::optional<std::vector<Signature>> signatures() = 0;
    /// What the whole disk holds besides its partitions.
    virtual std::optional<std::vector<Signature>> diskSignatures() = 0;
    virtual bool read(std::uint64_t offset, std::span<unsigned char> bytes) = 0;
    virtual bool write(std::uint64_t offset, std::span<const unsigned char> bytes) = 0;
    /// Brings everything written onto the medium; what is read next comes from there.
    virtual bool flush() = 0;
    /// Lets the system take notice of a new partition table, now or when the disk is let go.
    virtual void tableHasChanged() = 0;
    /// The volume is a partition that FAT32 has been written to, all of it: what a partition table says of it
    /// is made to suit that, on systems that care. Whether it does.
    virtual bool setPartitionType() = 0;
};

enum class Access {
    Look, ///< reading, whoever else uses the disk
    Alone ///< reading and writing, and nobody else has anything of the disk mounted or in use otherwise
};

struct Opened {
    enum class Outcome { Done, InUse, NotAllowed, Encrypted, Failed };
    Outcome outcome = Outcome::Failed;
    std::unique_ptr<HeldVolume> volume; ///< there when, and only when, it is done
    std::string reason;                 ///< why not, in the system's words; may be empty
};

class System {
public:
    System() = default;
    System(const System&) = delete;
    System& operator=(const System&) = delete;
    virtual ~System() = default;

    /// Why there is no table of drives, a sentence; empty when there is one.
    virtual std::string tableProblem() = 0;
    /// No value when the letter is not in the table.
    virtual std::optional<Target> targetOf(char letter) = 0;
    /// No value when the path is no block device.
    virtual std::optional<Volume> inspect(const std::string& node) = 0;

    /// Which disks count as the system's, or in its use: a sentence.
    virtual std::string systemsOwn() = 0;
    /// May ask the user for a password.
    virtual Opened open(const Volume& volume, Access access) = 0;
    virtual bool unmount(const Mount& mount) = 0;
    virtual std::uint32_t randomNumber() = 0;
    /// The user's clock.
    virtual std::tm localTime();

    /// Shows a text to the user at once.
    virtual void print(const std::string& text) = 0;
    /// A line that the user types, without its end; no value at the end of the input.
    virtual std::optional<std::string> readLine() = 0;
    /// Whether who gave the answer still waits for what comes of it. Where the question is this process's
    /// own, it ends together with who was asked.
    virtual bool isAskerThere() { return true; }
};

} // namespace fat32format
