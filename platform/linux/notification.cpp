// https://specifications.freedesktop.org/notification/latest/protocol.html
#include "platform/notification.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingReply>
#include <QStringList>
#include <QVariantMap>

#include <optional>

namespace platform {

namespace {

constexpr const char* service = "org.freedesktop.Notifications";
constexpr const char* path = "/org/freedesktop/Notifications";
constexpr int untilTheDesktopSays = -1;

QString text(std::string_view utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

/// The number that the desktop gave the last one; 0 while there is none, or it has not answered.
quint32 numberOf(const std::optional<QDBusPendingCall>& shown) {
    if (!shown || !shown->isFinished()) return 0;
    const QDBusPendingReply<quint32> reply = *shown;
    return reply.isError() ? 0 : reply.value();
}

} // namespace

bool showNotification(std::intptr_t /*window*/, std::string_view title, std::string_view body) {
    static std::optional<QDBusPendingCall> last;
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return false;
    QDBusMessage request = QDBusMessage::createMethodCall(service, path, service, "Notify");
    const QVariantMap hints = {{"desktop-entry", "orvanta-usbtool"}};
    request << QStringLiteral("Orvanta USB-Stick Internetupdate Tool") << numberOf(last)
            << QStringLiteral("orvanta-usbtool") << text(title) << text(body).toHtmlEscaped() << QStringList()
            << hints << untilTheDesktopSays;
    last = bus.asyncCall(request);
    return true;
}

} // namespace platform
