// Drives as UDisks2 describes them, made up for tests.
#pragma once

#include "platform/linux/drives/udisks.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QDBusObjectPath>
#include <QVariantMap>

namespace conformance {

using platform::linux::udisks::Interfaces;
using platform::linux::udisks::Objects;

inline constexpr const char* blockInterface = "org.freedesktop.UDisks2.Block";
inline constexpr const char* driveInterface = "org.freedesktop.UDisks2.Drive";
inline constexpr const char* fileSystemInterface = "org.freedesktop.UDisks2.Filesystem";
inline constexpr const char* partitionInterface = "org.freedesktop.UDisks2.Partition";
inline constexpr const char* tableInterface = "org.freedesktop.UDisks2.PartitionTable";

inline QDBusObjectPath drivePath(const QString& name) {
    return QDBusObjectPath(platform::linux::udisks::drivesPath + name);
}

inline QDBusObjectPath blockPath(const QString& name) {
    return QDBusObjectPath(platform::linux::udisks::blockDevicesPath + name);
}

/// With a medium that stays in: a hard disk.
inline Interfaces drive(const QString& serial, const QVariantMap& more = {}) {
    QVariantMap properties = {{"Serial", serial},       {"MediaRemovable", false},
                              {"Removable", true},      {"Optical", false},
                              {"Media", QString()},     {"MediaCompatibility", QStringList()},
                              {"ConnectionBus", "usb"}, {"Ejectable", true},
                              {"MediaAvailable", true}, {"TimeDetected", quint64{1'700'000'000'000'000}}};
    properties.insert(more);
    return {{driveInterface, properties}};
}

inline Interfaces stickDrive(const QString& serial) {
    return drive(serial, {{"MediaRemovable", true}});
}

/// A block device without contents that UDisks2 knows.
inline Interfaces blankBlock(const QString& name, quint64 number, const QString& driveName,
                             const QVariantMap& more = {}) {
    QByteArray device = "/dev/" + name.toUtf8();
    device.append('\0');
    const QDBusObjectPath on = driveName.isEmpty() ? QDBusObjectPath("/") : drivePath(driveName);
    QVariantMap properties = {{"Device", device},
                              {"DeviceNumber", number},
                              {"Drive", QVariant::fromValue(on)},
                              {"CryptoBackingDevice", QVariant::fromValue(QDBusObjectPath("/"))},
                              {"Size", quint64{4'000'000'000}},
                              {"HintIgnore", false},
                              {"HintSystem", false},
                              {"IdUsage", ""},
                              {"IdType", ""},
                              {"IdVersion", ""},
                              {"IdLabel", ""},
                              {"IdUUID", ""}};
    properties.insert(more);
    return {{blockInterface, properties}};
}

inline QVariantMap fat32(const QString& label, const QString& uuid = "AAAA-0001") {
    return {{"IdUsage", "filesystem"},
            {"IdType", "vfat"},
            {"IdVersion", "FAT32"},
            {"IdLabel", label},
            {"IdUUID", uuid}};
}

inline QVariantMap mountedAt(const QByteArrayList& folders) {
    QByteArrayList closed;
    for (QByteArray folder : folders)
        closed << folder.append('\0');
    return {{"MountPoints", QVariant::fromValue(closed)}};
}

/// A block device with a file system, FAT32 unless `more` says otherwise.
inline Interfaces fileSystemBlock(const QString& name, quint64 number, const QString& driveName,
                                  const QVariantMap& more = {}, const QByteArrayList& folders = {}) {
    QVariantMap contents = fat32(name.toUpper());
    contents.insert(more);
    Interfaces interfaces = blankBlock(name, number, driveName, contents);
    interfaces[fileSystemInterface] = mountedAt(folders);
    return interfaces;
}

inline Interfaces onTable(Interfaces interfaces, const QString& disk, bool isContainer = false) {
    interfaces[partitionInterface] = {{"Table", QVariant::fromValue(blockPath(disk))},
                                      {"IsContainer", isContainer}};
    return interfaces;
}

inline Interfaces withTable(Interfaces interfaces) {
    interfaces[tableInterface] = {{"Type", "dos"}};
    return interfaces;
}

} // namespace conformance
