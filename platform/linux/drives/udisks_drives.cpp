#include "platform/linux/drives/udisks_drives.h"

#include "platform/blocking.h"
#include "platform/linux/drives/disk_note.h"
#include "platform/linux/drives/fat_label.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <utility>

namespace platform::linux {

namespace {

using namespace std::chrono_literals;

constexpr char systemLetter = 'C';
constexpr char treeLetter = 'Z';
constexpr const char* tree = "/";

/// A volume can be busy for a moment after the last file was closed, when the desktop looks at what has
/// changed.
constexpr auto busyTime = 600ms;
constexpr auto busyPause = 150ms;

/// Whoever gives a label waits for it, and a volume that was just mounted or written is looked at by many.
constexpr auto labelBusyTime = 5s;

/// Between a mount by the desktop that keeps the program's own one from succeeding and its mount point in the
/// list.
constexpr int desktopAttempts = 5;
constexpr auto desktopPause = 100ms;

/// Between two looks at whether the volume is mounted.
constexpr auto mountLook = 5ms;

constexpr int labelAttempts = 20;
constexpr auto labelPause = 50ms;

std::string sentenceFor(udisks::Missing missing) {
    switch (missing) {
    case udisks::Missing::Bus:
        return "USB-Sticks werden nicht erkannt: Der Systembus (D-Bus) ist nicht erreichbar. Starten Sie den "
               "Dienst \"dbus\".";
    case udisks::Missing::Service:
        return "USB-Sticks werden nicht erkannt: Der Dienst UDisks2 fehlt. Installieren Sie das Paket "
               "\"udisks2\".";
    case udisks::Missing::Answer:
        return "USB-Sticks werden nicht erkannt: Der Dienst UDisks2 antwortet nicht. Starten Sie den Dienst "
               "\"udisks2\" neu.";
    case udisks::Missing::Nothing:
        break;
    }
    return {};
}

/// Asks until the answer is another one than "busy", or for that long.
udisks::Outcome patiently(std::chrono::milliseconds patience, const std::function<udisks::Outcome()>& ask) {
    const auto end = std::chrono::steady_clock::now() + patience;
    udisks::Outcome outcome = ask();
    while (outcome == udisks::Outcome::Busy && std::chrono::steady_clock::now() < end) {
        pauseFor(busyPause);
        outcome = ask();
    }
    return outcome;
}

bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool standsForTree(char letter) {
    return letter == systemLetter || letter == treeLetter;
}

} // namespace

void UdisksDrives::refresh() {
    listed_ = true;
    const udisks::Everything everything = udisks::managedObjects();
    missing_ = sentenceFor(everything.missing);
    complaint_.tell(missing_);
    volumes_.clear();
    // Letters and mounts are kept in mind when the service is away: it may come back with the same volumes.
    if (everything.missing != udisks::Missing::Nothing) return;
    volumes_ = udisksVolumes(everything.objects);
    // The service tells of a disk before it tells of its partitions: until then it looks like a blank one.
    std::erase_if(volumes_, [this](const UdisksVolume& volume) {
        return hasPartitions(volume.deviceNumber, devices_);
    });
    for (UdisksVolume& volume : volumes_)
        volume.note = diskNote(volume.deviceNumber, volume.driveSerial.toStdString(), devices_);
    letters_.assign(volumes_);
    forgetWhatIsGone();
}

/// A mount point can be missing in the list although the volume is mounted there: the service may answer to a
/// mount before it has noticed that it is done. The device tells.
void UdisksDrives::forgetWhatIsGone() {
    std::map<QString, Mounted> stillThere;
    for (UdisksVolume& volume : volumes_) {
        const auto mounted = mounted_.find(volume.object);
        if (mounted == mounted_.end()) continue;
        auto& folders = volume.folders;
        const std::string& folder = mounted->second.folder;
        const bool listed = std::find(folders.begin(), folders.end(), folder) != folders.end();
        if (!listed && !isStillMounted(volume)) continue;
        if (folders.empty()) folders.push_back(folder);
        stillThere.insert(*mounted);
    }
    mounted_ = std::move(stillThere);
}

UdisksVolume* UdisksDrives::find(char letter) {
    if (!listed_) refresh();
    const auto found = std::find_if(volumes_.begin(), volumes_.end(),
                                    [letter](const UdisksVolume& volume) { return volume.letter == letter; });
    return found == volumes_.end() ? nullptr : &*found;
}

std::string UdisksDrives::letters() {
    if (!listed_) refresh();
    std::string result = {systemLetter, treeLetter};
    for (const UdisksVolume& volume : volumes_)
        if (volume.letter != systemLetter) result += volume.letter;
    std::sort(result.begin(), result.end());
    return result;
}

DriveType UdisksDrives::type(char letter) {
    if (letter == systemLetter) return DriveFixed;
    if (letter == treeLetter) return DriveRemote;
    const UdisksVolume* volume = find(letter);
    return volume != nullptr ? volume->type : DriveNoRootDir;
}

std::string UdisksDrives::target(char letter) {
    if (letter == treeLetter) return tree;
    const UdisksVolume* volume = find(letter);
    return volume != nullptr ? volume->device : std::string();
}

std::string UdisksDrives::disk(char letter) {
    const UdisksVolume* volume = find(letter);
    return volume != nullptr ? volume->note : std::string();
}

/// The letter and its mount point may have passed on to a stick with the same names in the same port; the
/// sequence number of the disk has not.
std::string UdisksDrives::identity(char letter) {
    const UdisksVolume* volume = find(letter);
    if (volume == nullptr) {
        struct stat root = {};
        return standsForTree(letter) && stat(tree, &root) == 0 ? folderIdentity(root) : std::string();
    }
    if (volume->size == 0) return {};
    const QString names = volume->object + '\n' + volume->driveSerial + '\n' + volume->uuid + '\n';
    return names.toStdString() + std::to_string(volume->deviceNumber) + '\n' + std::to_string(volume->size) +
           '\n' + diskSequence(volume->deviceNumber, devices_);
}

bool UdisksDrives::isOnListedDisk(char letter) {
    const UdisksVolume* volume = find(letter);
    if (volume == nullptr || volume->note.empty()) return false;
    return volume->note == diskNote(volume->deviceNumber, volume->driveSerial.toStdString(), devices_);
}

/// Some file systems (btrfs) have a device number of their own making, of the kind that stands for no device.
bool UdisksDrives::isRoot(char letter, const struct stat& folder) {
    if (standsForTree(letter)) return deviceOf(tree) == folder.st_dev;
    const UdisksVolume* volume = find(letter);
    if (volume == nullptr) return false;
    if (volume->deviceNumber == folder.st_dev) return true;
    const auto mounted = mounted_.find(volume->object);
    return major(folder.st_dev) == 0 && mounted != mounted_.end() && mounted->second.device == folder.st_dev;
}

bool UdisksDrives::isStillMounted(const UdisksVolume& volume) const {
    const auto mounted = mounted_.find(volume.object);
    return mounted != mounted_.end() && deviceOf(mounted->second.folder) == mounted->second.device;
}

/// Where it is mounted already. The kernel knows of a mount before the service does.
bool UdisksDrives::use(UdisksVolume& volume, std::optional<QDBusPendingCall> asked) {
    if (volume.folders.empty())
        if (const auto folder = mountPointOf(volume.device, volume.deviceNumber, mounts_))
            volume.folders = {*folder};
    if (volume.folders.empty()) return false;
    const auto device = deviceOf(volume.folders.front());
    if (!device) return false;
    mounted_[volume.object] = {volume.folders.front(), *device, false, std::move(asked)};
    return true;
}

/// Waits for the answer when it is still to come: until then the service is not done with the volume.
bool UdisksDrives::isOwn(Mounted& mounted) {
    if (mounted.asked)
        mounted.byProgram = udisks::mountAnswer(*mounted.asked).outcome == udisks::Outcome::Done;
    mounted.asked.reset();
    return mounted.byProgram;
}

/// Brings the volume into `mounted_`, as soon as it is mounted: the answer takes twice as long.
bool UdisksDrives::mount(char letter) {
    UdisksVolume* volume = find(letter);
    if (volume == nullptr || volume->size == 0 || !volume->hasFileSystem) return false;
    if (use(*volume)) return true;
    QDBusPendingCall asked = udisks::startMount(volume->object);
    while (!asked.isFinished()) {
        if (use(*volume, asked)) return true;
        pauseFor(mountLook);
    }
    const udisks::MountAnswer answer = udisks::mountAnswer(asked);
    if (answer.outcome != udisks::Outcome::Done) return useDesktopMount(letter);
    volume->folders = {answer.folder.toStdString()};
    return use(*volume, asked);
}

/// The desktop may have been faster. The error tells little: as long as the service has not noticed that
/// mount, it says that the device is busy, or just that it failed.
bool UdisksDrives::useDesktopMount(char letter) {
    for (int attempt = 0;; ++attempt) {
        refresh();
        UdisksVolume* volume = find(letter);
        if (volume == nullptr || !volume->hasFileSystem) return false;
        if (use(*volume)) return true;
        if (attempt == desktopAttempts) return false;
        pauseFor(desktopPause);
    }
}

std::optional<std::string> UdisksDrives::folder(char letter) {
    if (standsForTree(letter)) return tree;
    const UdisksVolume* volume = find(letter);
    if (volume == nullptr) return std::nullopt;
    if (isStillMounted(*volume)) return mounted_.at(volume->object).folder;
    if (mounted_.contains(volume->object)) {
        mounted_.erase(volume->object);
        refresh();
    }
    if (!mount(letter)) return std::nullopt;
    return mounted_.at(find(letter)->object).folder;
}

std::optional<VolumeSpace> UdisksDrives::space(char letter) {
    const auto path = folder(letter);
    if (!path) return std::nullopt;
    return folderSpace(*path);
}

std::optional<VolumeNames> UdisksDrives::names(char letter) {
    const UdisksVolume* volume = find(letter);
    if (standsForTree(letter) && volume == nullptr) return VolumeNames{{}, mountedFileSystem(tree)};
    if (volume == nullptr || volume->size == 0 || !volume->hasFileSystem) return std::nullopt;
    return volume->names;
}

DiskDescription UdisksDrives::describe(char letter) {
    const UdisksVolume* volume = find(letter);
    if (volume == nullptr) return {};
    return {volume->maker, volume->model, volume->size, volume->names.label};
}

/// Whoever mounted it, wherever. What has been written is on its way to the medium before the call that the
/// service must answer in time.
bool UdisksDrives::unmount(UdisksVolume& volume, std::chrono::milliseconds patience) {
    while (!volume.folders.empty()) {
        (void)syncFileSystem(volume.folders.front());
        const udisks::Outcome outcome =
            patiently(patience, [&volume] { return udisks::unmount(volume.object); });
        if (outcome != udisks::Outcome::Done) return false;
        volume.folders.erase(volume.folders.begin());
        mounted_.erase(volume.object);
    }
    return true;
}

/// Names and numbers of a stick that was pulled while somebody typed a password are given again. A device
/// that is open keeps its number, so from here on it cannot be another one.
bool UdisksDrives::isDeviceOf(char letter, const std::string& meant, int device) {
    refresh();
    const UdisksVolume* volume = find(letter);
    struct stat opened = {};
    return volume != nullptr && fstat(device, &opened) == 0 && S_ISBLK(opened.st_mode) &&
           opened.st_rdev == volume->deviceNumber && identity(letter) == meant;
}

/// UDisks2 leaves the label of a FAT file system to a tool that takes ASCII only.
udisks::Outcome UdisksDrives::writeLabel(char letter, const std::string& meant, std::string_view label) {
    const UdisksVolume* volume = find(letter);
    if (volume == nullptr || identity(letter) != meant) return udisks::Outcome::Failed;
    if (!volume->isFat || isAscii(label))
        return udisks::setLabel(volume->object,
                                QString::fromUtf8(label.data(), static_cast<qsizetype>(label.size())));
    udisks::OpenedDevice opened = udisks::openDevice(volume->object);
    if (opened.outcome != udisks::Outcome::Done) return opened.outcome;
    if (!isDeviceOf(letter, meant, opened.device.get())) return udisks::Outcome::Failed;
    const FatLabel written = blocking([device = std::move(opened.device), label = std::string(label)] {
        return writeFatLabel(device.get(), label);
    });
    return written == FatLabel::Done ? udisks::Outcome::Done : udisks::Outcome::Failed;
}

bool UdisksDrives::setLabel(char letter, std::string_view label) {
    if (standsForTree(letter)) return false;
    const std::string meant = identity(letter); // as the caller has compared it, or unknown so far
    refresh();
    const std::string now = identity(letter);
    if (!meant.empty() && now != meant) return false;
    UdisksVolume* volume = find(letter);
    if (volume == nullptr || volume->size == 0 || !volume->hasFileSystem) return false;
    const std::string before = volume->names.label;
    const auto mounted = mounted_.find(volume->object);
    const bool byProgram = mounted != mounted_.end() && isOwn(mounted->second);
    const bool wasMounted = !volume->folders.empty();
    if (!unmount(*volume, labelBusyTime)) return false;
    const bool done =
        patiently(labelBusyTime, [&] { return writeLabel(letter, now, label); }) == udisks::Outcome::Done;
    if (done) waitForLabel(letter, before, label);
    if (wasMounted && mount(letter) && !byProgram) mounted_.at(find(letter)->object).asked.reset();
    return done;
}

/// The service learns of the new label by an event of the kernel, shortly after it has answered. It need not
/// be the wanted one to the letter: FAT has capitals only.
void UdisksDrives::waitForLabel(char letter, const std::string& before, std::string_view wanted) {
    for (int attempt = 0; attempt < labelAttempts; ++attempt) {
        refresh();
        const UdisksVolume* volume = find(letter);
        if (volume == nullptr || volume->names.label != before || volume->names.label == wanted) return;
        pauseFor(labelPause);
    }
}

bool UdisksDrives::settle(char letter) {
    if (standsForTree(letter)) return syncFileSystem(tree);
    UdisksVolume* volume = find(letter);
    if (volume == nullptr || volume->size == 0) return false;
    if (!mounted_.contains(volume->object)) {
        if (volume->folders.empty()) return true; // nothing was written that could be missing
        if (!use(*volume)) return false;
    }
    const Mounted mounted = mounted_.at(volume->object);
    if (!isStillMounted(*volume) || !syncFileSystem(mounted.folder)) return false;
    // Everything is on the medium by now. Somebody who still looks at the stick keeps it mounted, and loses
    // nothing. The others, which were only measured, may be pulled as well.
    release();
    return true;
}

void UdisksDrives::release() {
    for (UdisksVolume& volume : volumes_) {
        const auto mounted = mounted_.find(volume.object);
        if (mounted != mounted_.end() && isOwn(mounted->second)) (void)unmount(volume, busyTime);
    }
}

std::vector<PresentDrive> UdisksDrives::present() {
    if (!listed_) refresh();
    std::vector<PresentDrive> drives;
    for (const UdisksVolume& volume : volumes_) {
        if (volume.letter == systemLetter || volume.size == 0) continue;
        const QString drive = volume.object + '\n' + volume.driveSerial + '\n' + volume.uuid + '\n';
        drives.push_back(
            {volume.letter, drive.toStdString() + volume.names.fileSystem, volume.hasFileSystem});
    }
    return drives;
}

} // namespace platform::linux
