// Docks and taskbars that know the launcher's interface listen to it: those of KDE, Dash to Dock and others.
// https://wiki.ubuntu.com/Unity/LauncherAPI#Low_level_DBus_API:_com.canonical.Unity.LauncherEntry
#include "platform/taskbar.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QVariantMap>

namespace platform {

bool showInTaskbar(std::intptr_t /*window*/, TaskbarProgress progress, double share) {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return false;
    QDBusMessage update = QDBusMessage::createSignal("/com/canonical/Unity/LauncherEntry/orvanta_usbtool",
                                                     "com.canonical.Unity.LauncherEntry", "Update");
    const bool known = progress == TaskbarProgress::KnownShare;
    update << QStringLiteral("application://orvanta-usbtool.desktop")
           << QVariantMap{{"progress", known ? share : 0.0}, {"progress-visible", known}};
    return bus.send(update);
}

} // namespace platform
