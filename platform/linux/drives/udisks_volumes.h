// Which of the block devices that UDisks2 knows are drives of the table, and what they are.
#pragma once

#include "platform/linux/drives/drive_source.h"
#include "platform/linux/drives/udisks.h"

#include <cstdint>
#include <string>
#include <vector>

namespace platform::linux {

struct UdisksVolume {
    char letter = 0; ///< 0 as long as it has none
    DriveType type = DriveFixed;
    bool floppy = false;
    bool holdsRoot = false; ///< mounted at "/"
    QString object;         ///< path on the bus
    QString disk;           ///< path of the disk that it is a partition of, else its own
    std::string device;     ///< node: "/dev/sdb1"
    std::uint64_t deviceNumber = 0;
    std::uint64_t size = 0; ///< bytes; 0 without a medium
    std::string maker;      ///< of the disk, as the next
    std::string model;
    QString driveSerial;
    std::int64_t driveDetected = 0; ///< µs since 1970
    QString uuid;                   ///< of the file system
    bool hasFileSystem = false;
    bool isFat = false;
    VolumeNames names;
    std::vector<std::string> folders; ///< mount points
    std::string note;                 ///< which disk it is on, as diskNote() has it
};

/// In the order in which the kernel numbered the devices. Left out are: what UDisks2 says to ignore; loop
/// devices; swap, encrypted and other contents that are no file system; system volumes but the one at "/"; a
/// disk that is divided into partitions, and the frame of logical partitions. An empty drive and a blank disk
/// are in.
std::vector<UdisksVolume> udisksVolumes(const udisks::Objects& objects);

/// What Windows calls a file system that blkid calls so.
std::string windowsFileSystemName(const std::string& type, const std::string& version);

} // namespace platform::linux
