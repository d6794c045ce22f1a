// Where the drive table comes from: a file beside the program, or UDisks2.
#pragma once

#include "platform/volumes.h"

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform::linux {

/// Sizes in bytes.
struct VolumeSpace {
    std::uint64_t freeToCaller = 0;
    std::uint64_t total = 0;
    std::uint64_t totalFree = 0;
};

/// Both UTF-8.
struct VolumeNames {
    std::string label;
    std::string fileSystem; ///< as Windows calls it: "FAT32"
};

/// A drive that holds something, as the watch for arrivals and removals sees it.
struct PresentDrive {
    char letter = 0;
    std::string identity;   ///< another one at the same letter is another volume
    bool recognised = true; ///< its contents are known; a blank disk may only not have been read yet
    bool operator==(const PresentDrive&) const = default;
};

/// Letters are upper case. A question about a letter that the source does not have is answered like one about
/// an empty drive.
class DriveSource {
public:
    DriveSource() = default;
    DriveSource(const DriveSource&) = delete;
    DriveSource& operator=(const DriveSource&) = delete;
    virtual ~DriveSource() = default;

    /// Brings the list of drives up to date.
    virtual void refresh() = 0;
    /// Ascending.
    virtual std::string letters() = 0;
    virtual DriveType type(char letter) = 0;
    /// What the drive is for the system, a device node or a folder; empty when nothing stands for it.
    virtual std::string target(char letter) = 0;
    /// Which disk that is, as diskNote() has it; empty where no disk stands for it.
    virtual std::string disk(char letter) = 0;
    /// Tells the drive's volume from every other one, see drive_identity.h; empty without a medium. It is as
    /// true as the list is new.
    virtual std::string identity(char letter) = 0;
    /// Whether the kernel says that the volume is on the very disk that it was on when the list was made;
    /// false when that cannot be told.
    virtual bool isOnListedDisk(char /*letter*/) { return false; }
    /// Whether an open folder, of which these are the facts, is the root of the volume that has that letter.
    virtual bool isRoot(char letter, const struct stat& folder) = 0;
    /// Folder of the drive's root; mounts it when need be.
    virtual std::optional<std::string> folder(char letter) = 0;
    virtual std::optional<VolumeSpace> space(char letter) = 0;
    virtual std::optional<VolumeNames> names(char letter) = 0;
    /// Mounts nothing.
    virtual DiskDescription describe(char letter) = 0;
    virtual bool setLabel(char letter, std::string_view label) = 0;
    virtual bool settle(char letter) = 0;
    /// Unmounts what was mounted by folder().
    virtual void release() = 0;
    virtual std::vector<PresentDrive> present() = 0;
    /// What the source itself lacks, as missingDriveService() tells it.
    virtual std::string missing() { return {}; }
    /// Whether UDisks2 tells when the table has changed.
    virtual bool isOnBus() const = 0;
};

} // namespace platform::linux
