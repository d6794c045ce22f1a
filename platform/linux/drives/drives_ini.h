// Drives by a file, for kiosks, containers and demonstrations: when "Drives.ini" lies in the program folder
// it is the whole table. A section a drive:
//
//   [E:]
//   Type=2             2 removable, 3 fixed, 4 remote, 5 optical
//   Path=stick         folder, absolute or below the program folder
//   Label=ORVANTA
//   FileSystem=FAT32
//   Total=4294967296   bytes; without it what statvfs says of Path
//   Free=1000000000    bytes; without it Total less the files below Path, or
//                      what statvfs says when they take more than 100 ms to count
//
// A drive whose folder is missing has no medium.
#pragma once

#include "platform/linux/base/complaint.h"
#include "platform/linux/drives/drive_source.h"

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform::linux {

struct IniDrive {
    char letter = 0;
    DriveType type = DriveUnknown;
    std::string folder; ///< absolute
    VolumeNames names;
    std::optional<std::uint64_t> total;
    std::optional<std::uint64_t> free;
};

/// The drives that the file's contents (Windows-1252) name, by letter, ascending. Sections that make no drive
/// are left out. `base` is the folder that a relative path starts from.
std::vector<IniDrive> parseDrivesIni(std::string_view contents, const std::string& base);

class IniDrives : public DriveSource {
public:
    /// Reads the file when it is another one than the last time; false when there is none. One that cannot be
    /// read, or is larger than largestProfile, changes nothing, and the reason is told.
    bool load();

    void refresh() override {}
    std::string letters() override;
    DriveType type(char letter) override;
    std::string target(char letter) override;
    std::string disk(char) override { return {}; } // folders, all of them
    std::string identity(char letter) override;
    bool isRoot(char letter, const struct stat& folder) override;
    std::optional<std::string> folder(char letter) override;
    std::optional<VolumeSpace> space(char letter) override;
    std::optional<VolumeNames> names(char letter) override;
    DiskDescription describe(char letter) override;
    bool setLabel(char letter, std::string_view label) override;
    bool settle(char letter) override;
    void release() override {}
    std::vector<PresentDrive> present() override;
    bool isOnBus() const override { return false; }

private:
    const IniDrive* find(char letter) const;
    void read(const std::string& file, const struct stat& status);
    static std::optional<std::uint64_t> freeOf(const std::string& folder, std::uint64_t total);
    bool isUnchanged(const struct stat& status) const;

    std::vector<IniDrive> drives_;
    Complaint complaint_;
    bool there_ = false;
    struct stat read_ = {};
    /// The file was old enough when it was read for any later change to show in its time.
    bool settled_ = false;
};

} // namespace platform::linux
