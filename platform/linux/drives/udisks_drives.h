// The drive table of a desktop: UDisks2 knows the volumes, and mounts them.
#pragma once

#include "platform/linux/base/complaint.h"
#include "platform/linux/drives/drive_letters.h"
#include "platform/linux/drives/drive_source.h"
#include "platform/linux/drives/udisks.h"
#include "platform/linux/drives/volume_folder.h"

#include <QDBusPendingCall>

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace platform::linux {

/// Besides what UDisks2 lists there are always `C` and `Z`, both "/": `C` is the volume that holds it, a
/// fixed disk; `Z`, the whole tree, is neither fixed nor removable and comes last. Without UDisks2 they are
/// alone.
class UdisksDrives : public DriveSource {
public:
    /// `mounts` is a list as the kernel keeps it, `devices` a folder as it shows its devices: its own ones
    /// but for tests.
    explicit UdisksDrives(std::string mounts = mountTable, std::string devices = deviceFolder)
        : mounts_(std::move(mounts)), devices_(std::move(devices)) {}

    /// One round trip to UDisks2. Everything else works with the list of that moment, unless it turns out to
    /// be wrong.
    void refresh() override;
    std::string letters() override;
    DriveType type(char letter) override;
    std::string target(char letter) override;
    std::string disk(char letter) override;
    std::string identity(char letter) override;
    bool isOnListedDisk(char letter) override;
    bool isRoot(char letter, const struct stat& folder) override;
    std::optional<std::string> folder(char letter) override;
    std::optional<VolumeSpace> space(char letter) override;
    std::optional<VolumeNames> names(char letter) override;
    DiskDescription describe(char letter) override;
    /// Unmounts the volume for it, since most file systems take a label only then. A volume that someone else
    /// had mounted is mounted again. What is busy is tried again for 5 s. Nothing is written when another one
    /// has come into its place meanwhile.
    bool setLabel(char letter, std::string_view label) override;
    /// What the program mounted is unmounted, the other drives as well, because only then a pulled stick is
    /// clean.
    bool settle(char letter) override;
    void release() override;
    std::string missing() override { return missing_; }
    std::vector<PresentDrive> present() override;
    bool isOnBus() const override { return true; }

private:
    /// A mount point in use. The device tells whether the volume is still there, or just its folder.
    struct Mounted {
        std::string folder;
        std::uint64_t device = 0;
        bool byProgram = false;
        std::optional<QDBusPendingCall> asked; ///< its answer will tell who mounted it
    };

    UdisksVolume* find(char letter);
    void forgetWhatIsGone();
    bool isStillMounted(const UdisksVolume& volume) const;
    bool mount(char letter);
    bool useDesktopMount(char letter);
    bool use(UdisksVolume& volume, std::optional<QDBusPendingCall> asked = std::nullopt);
    static bool isOwn(Mounted& mounted);
    bool unmount(UdisksVolume& volume, std::chrono::milliseconds patience);
    bool isDeviceOf(char letter, const std::string& meant, int device);
    udisks::Outcome writeLabel(char letter, const std::string& meant, std::string_view label);
    void waitForLabel(char letter, const std::string& before, std::string_view wanted);

    std::string mounts_;
    std::string devices_;
    std::vector<UdisksVolume> volumes_;
    std::map<QString, Mounted> mounted_; ///< by object
    DriveLetters letters_;
    bool listed_ = false;
    std::string missing_;
    Complaint complaint_;
};

} // namespace platform::linux
