// The calls to UDisks2 that the drive table needs. Each but the first part of a mount blocks for one answer
// of the service, which the bus starts when it is not running; none waits for ever.
// http://storaged.org/doc/udisks2-api/latest/
#pragma once

#include "platform/linux/base/unique_fd.h"

#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QMap>
#include <QString>
#include <QVariantMap>

#include <optional>

namespace platform::linux::udisks {

inline constexpr const char* service = "org.freedesktop.UDisks2";
inline constexpr const char* managerPath = "/org/freedesktop/UDisks2";
inline constexpr const char* blockDevicesPath = "/org/freedesktop/UDisks2/block_devices/";
inline constexpr const char* drivesPath = "/org/freedesktop/UDisks2/drives/";

using Interfaces = QMap<QString, QVariantMap>;
using Objects = QMap<QDBusObjectPath, Interfaces>;

enum class Outcome { Done, AlreadyMounted, Busy, Failed };

struct OpenedDevice {
    Outcome outcome = Outcome::Failed;
    UniqueFd device; ///< to read and write, and nobody else's; empty unless it is done
};

struct MountAnswer {
    Outcome outcome = Outcome::Failed;
    QString folder;
};

/// Why the service did not tell what it knows.
enum class Missing { Nothing, Bus, Service, Answer };

struct Everything {
    Objects objects;
    Missing missing = Missing::Nothing;
};

/// Everything the service knows, in one round trip.
Everything managedObjects();

// `object` is the path of a block device. None but the last asks the user for a password.

/// A mount in two parts, since the service answers late: the volume is mounted by then, and udev has looked
/// at it anew.
QDBusPendingCall startMount(const QString& object);
MountAnswer mountAnswer(QDBusPendingCall& asked);

Outcome unmount(const QString& object);
Outcome setLabel(const QString& object, const QString& label);

/// Opens an unmounted device. The one call that may ask the user for a password: the right to it belongs to
/// administrators.
OpenedDevice openDevice(const QString& object);

} // namespace platform::linux::udisks
