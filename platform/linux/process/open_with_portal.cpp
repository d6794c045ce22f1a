#include "platform/linux/process/open_with_portal.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QVariantMap>

namespace platform::linux {

bool askPortalToOpen(int file) {
    constexpr int patience = 2000; // milliseconds; the window does not answer meanwhile
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return false;
    QDBusMessage request =
        QDBusMessage::createMethodCall("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
                                       "org.freedesktop.portal.OpenURI", "OpenFile");
    const QString noParentWindow = "";
    request << noParentWindow << QVariant::fromValue(QDBusUnixFileDescriptor(file))
            << QVariantMap{{"ask", true}};
    return bus.call(request, QDBus::Block, patience).type() == QDBusMessage::ReplyMessage;
}

} // namespace platform::linux
