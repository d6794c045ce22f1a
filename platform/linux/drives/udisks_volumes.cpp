#include "platform/linux/drives/udisks_volumes.h"

#include "platform/linux/base/dos_text.h"

#include <QByteArrayList>
#include <QDBusArgument>

#include <algorithm>
#include <map>

namespace platform::linux {

namespace {

using udisks::Interfaces;
using udisks::Objects;

constexpr const char* blockInterface = "org.freedesktop.UDisks2.Block";
constexpr const char* driveInterface = "org.freedesktop.UDisks2.Drive";
constexpr const char* fileSystemInterface = "org.freedesktop.UDisks2.Filesystem";
constexpr const char* loopInterface = "org.freedesktop.UDisks2.Loop";
constexpr const char* partitionInterface = "org.freedesktop.UDisks2.Partition";
constexpr const char* swapInterface = "org.freedesktop.UDisks2.Swapspace";

/// A path is bytes closed by a NUL.
std::string bytesToPath(const QByteArray& bytes) {
    return bytes.constData();
}

std::vector<std::string> mountPoints(const Interfaces& interfaces) {
    std::vector<std::string> folders;
    const QVariant points = interfaces.value(fileSystemInterface).value("MountPoints");
    for (const QByteArray& point : qdbus_cast<QByteArrayList>(points))
        folders.push_back(bytesToPath(point));
    return folders;
}

/// Path of the partition table that a partition stands in.
QString tableOf(const Interfaces& interfaces) {
    return qvariant_cast<QDBusObjectPath>(interfaces.value(partitionInterface).value("Table")).path();
}

/// Paths of the partition tables that have partitions.
QStringList dividedDisks(const Objects& objects) {
    QStringList tables;
    for (const Interfaces& interfaces : objects)
        if (interfaces.contains(partitionInterface)) tables << tableOf(interfaces);
    return tables;
}

bool isPossibleVolume(const Interfaces& interfaces) {
    const QVariantMap block = interfaces.value(blockInterface);
    if (block.value("HintIgnore").toBool() || interfaces.contains(loopInterface)) return false;
    if (bytesToPath(qdbus_cast<QByteArray>(block.value("Device"))).starts_with("/dev/loop")) return false;
    if (interfaces.contains(swapInterface) || block.value("IdType").toString() == "swap") return false;
    if (interfaces.value(partitionInterface).value("IsContainer").toBool()) return false;
    const QString usage = block.value("IdUsage").toString();
    return usage == "filesystem" || usage.isEmpty();
}

/// Properties of the interface of the object that `name` leads to; none when it leads nowhere.
QVariantMap follow(const Objects& objects, const QVariantMap& properties, const char* name,
                   const char* interface) {
    return objects.value(qvariant_cast<QDBusObjectPath>(properties.value(name))).value(interface);
}

/// Properties of the drive that a block device is on; an opened encrypted volume is on its closed one's.
QVariantMap driveOf(const Objects& objects, const QVariantMap& block) {
    const QVariantMap closed = follow(objects, block, "CryptoBackingDevice", blockInterface);
    return follow(objects, closed.isEmpty() ? block : closed, "Drive", driveInterface);
}

bool anyBeginsWith(const QStringList& kinds, const char* prefix) {
    return std::any_of(kinds.begin(), kinds.end(),
                       [prefix](const QString& kind) { return kind.startsWith(prefix); });
}

/// The kind of medium that is in the drive and those that it can take.
QStringList mediaOf(const QVariantMap& drive) {
    return drive.value("MediaCompatibility").toStringList() << drive.value("Media").toString();
}

DriveType typeOf(const QVariantMap& drive) {
    const QStringList media = mediaOf(drive);
    if (drive.value("Optical").toBool() || anyBeginsWith(media, "optical")) return DriveCdRom;
    const bool removable = drive.value("MediaRemovable").toBool() || anyBeginsWith(media, "flash") ||
                           anyBeginsWith(media, "floppy");
    return removable ? DriveRemovable : DriveFixed;
}

/// What udev made of a label in the name of a link: "M\x9aLL".
QByteArray decoded(QByteArray name) {
    for (qsizetype at = name.indexOf("\\x"); at >= 0; at = name.indexOf("\\x", at + 1))
        name.replace(at, 4, QByteArray::fromHex(name.mid(at + 2, 2)));
    return name;
}

/// A label of FAT is in the code page of DOS. UDisks2 ends it at the first byte that is no UTF-8; the link
/// that udev names after it has all of it.
std::string fatLabelOf(const QVariantMap& block) {
    const QByteArray folder = "/dev/disk/by-label/";
    for (const QByteArray& link : qdbus_cast<QByteArrayList>(block.value("Symlinks"))) {
        if (!link.startsWith(folder)) continue;
        const QByteArray label =
            decoded(bytesToPath(link).substr(static_cast<std::size_t>(folder.size())).c_str());
        if (!QString::fromUtf8(label).contains(QChar::ReplacementCharacter))
            break; // UDisks2 can read it as well
        return fromDos(label.toStdString());
    }
    return block.value("IdLabel").toString().toStdString();
}

UdisksVolume volumeOf(const Objects& objects, const QString& object, const Interfaces& interfaces) {
    const QVariantMap block = interfaces.value(blockInterface);
    const QVariantMap drive = driveOf(objects, block);
    UdisksVolume volume;
    volume.type = typeOf(drive);
    volume.floppy = anyBeginsWith(mediaOf(drive), "floppy");
    volume.object = object;
    volume.disk = interfaces.contains(partitionInterface) ? tableOf(interfaces) : object;
    volume.device = bytesToPath(qdbus_cast<QByteArray>(block.value("Device")));
    volume.deviceNumber = block.value("DeviceNumber").toULongLong();
    volume.size = block.value("Size").toULongLong();
    volume.maker = drive.value("Vendor").toString().toStdString();
    volume.model = drive.value("Model").toString().toStdString();
    volume.driveSerial = drive.value("Serial").toString();
    volume.driveDetected = drive.value("TimeDetected").toLongLong();
    volume.uuid = block.value("IdUUID").toString();
    volume.hasFileSystem = block.value("IdUsage").toString() == "filesystem";
    volume.isFat = block.value("IdType").toString() == "vfat";
    volume.names = {volume.isFat ? fatLabelOf(block) : block.value("IdLabel").toString().toStdString(),
                    windowsFileSystemName(block.value("IdType").toString().toStdString(),
                                          block.value("IdVersion").toString().toStdString())};
    volume.folders = mountPoints(interfaces);
    volume.holdsRoot = std::find(volume.folders.begin(), volume.folders.end(), "/") != volume.folders.end();
    return volume;
}

} // namespace

std::vector<UdisksVolume> udisksVolumes(const Objects& objects) {
    const QStringList divided = dividedDisks(objects);
    std::vector<UdisksVolume> volumes;
    for (auto object = objects.begin(); object != objects.end(); ++object) {
        const QString path = object.key().path();
        const Interfaces& interfaces = object.value();
        if (!interfaces.contains(blockInterface) || divided.contains(path) || !isPossibleVolume(interfaces))
            continue;
        UdisksVolume volume = volumeOf(objects, path, interfaces);
        if (volume.holdsRoot || !interfaces.value(blockInterface).value("HintSystem").toBool())
            volumes.push_back(std::move(volume));
    }
    std::stable_sort(volumes.begin(), volumes.end(), [](const UdisksVolume& left, const UdisksVolume& right) {
        return left.deviceNumber < right.deviceNumber;
    });
    return volumes;
}

std::string windowsFileSystemName(const std::string& type, const std::string& version) {
    static const std::map<std::string, std::string> names = {
        {"exfat", "exFAT"}, {"iso9660", "CDFS"}, {"ntfs", "NTFS"}, {"udf", "UDF"}};
    if (type == "vfat") return version == "FAT32" ? "FAT32" : "FAT";
    const auto found = names.find(type);
    return found == names.end() ? type : found->second;
}

} // namespace platform::linux
