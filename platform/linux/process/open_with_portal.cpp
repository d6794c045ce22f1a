#include "platform/linux/process/open_with_portal.h"

#include "platform/linux/base/bus_call.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QVariantMap>

namespace platform::linux {

bool askPortalToOpen(int file) {
    constexpr auto patience = std::chrono::seconds(2);
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return false;
    QDBusMessage request =
        QDBusMessage::createMethodCall("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
                                       "org.freedesktop.portal.OpenURI", "OpenFile");
    const QString noParentWindow = "";
    request << noParentWindow << QVariant::fromValue(QDBusUnixFileDescriptor(file))
            << QVariantMap{{"ask", true}};
    return callBus(bus, request, patience).type() == QDBusMessage::ReplyMessage;
}

} // namespace platform::linux
