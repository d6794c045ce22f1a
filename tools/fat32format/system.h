// What the formatter needs of the system, and all it needs: with another one in its place nothing is
// formatted.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace fat32format {

/// A volume, a partition or a whole disk, and the disk it lies on.
struct Volume {
    std::string node;       ///< its device, "/dev/sdb1"
    std::string stableNode; ///< a name of the same device that no other disk can take over; `node` where
                            ///< there is none
    std::string diskNode;   ///< the disk's device, "/dev/sdb"
    std::uint64_t deviceNumber = 0;
    std::uint64_t diskSequence =
        0;              ///< which of all disks since the start of the system it is; 0 when not known
    std::string model;  ///< of the disk; may be empty
    std::string serial; ///< of the disk; may be empty
    std::uint64_t diskBytes = 0;
    std::uint64_t bytes = 0;
    std::uint32_t sectorSize = 512; ///< logical, in bytes
    bool isPartition = false;
    bool diskHasPartitions = false;
    bool onUsb = false;
    bool readOnly = false;
    bool systemUse =
        false; ///< something of the disk is mounted as part of the system, or in its use otherwise
    std::vector<std::string> mounts; ///< where the user has the volume mounted

    /// Whether it is the same piece of the same disk, plugged in since.
    bool isSameAs(const Volume& other) const;
    /// Whether it lies on the disk, and has a name that is as lasting as the disk's.
    bool isReadyPartitionOf(const Volume& disk) const;
};

struct CommandResult {
    int status = -1; ///< exit status; -1 when it could not be started or was killed
    std::string output;
};

class System {
public:
    System() = default;
    System(const System&) = delete;
    System& operator=(const System&) = delete;
    virtual ~System() = default;

    /// Why there is no table of drives, a sentence; empty when there is one.
    virtual std::string tableProblem() = 0;
    /// What the letter means in the table of drives: the path of a device, or of a folder; no value when it
    /// is not there.
    virtual std::optional<std::string> targetOf(char letter) = 0;
    /// No value when the path is no block device.
    virtual std::optional<Volume> inspect(const std::string& node) = 0;
    /// The first partition of a disk that has just been partitioned, when the kernel has it, and udev a name
    /// for it that is as lasting as the disk's; waits some seconds for it.
    virtual std::optional<Volume> firstPartitionOf(const Volume& disk) = 0;
    /// Bytes that have been written to the volume since the system started.
    virtual std::uint64_t bytesWritten(const Volume& volume) = 0;

    virtual bool isRoot() = 0;
    /// Absolute path of a program; no value when it is not installed.
    virtual std::optional<std::string> findTool(const std::string& name) = 0;
    /// Runs a program to its end, with a text on its standard input; `meanwhile` is called several times a
    /// second.
    virtual CommandResult run(const std::vector<std::string>& command, const std::string& input,
                              const std::function<void()>& meanwhile) = 0;
    virtual bool unmount(const std::string& place) = 0;
    /// Brings everything written onto the media.
    virtual void settle() = 0;

    /// Shows a text to the user at once.
    virtual void print(const std::string& text) = 0;
    /// A line that the user types, without its end; no value at the end of the input.
    virtual std::optional<std::string> readLine() = 0;
};

} // namespace fat32format
