// https://specifications.freedesktop.org/notification/latest/protocol.html, and from a sandbox
// https://flatpak.github.io/xdg-desktop-portal/docs/doc-org.freedesktop.portal.Notification.html
#include "platform/notification.h"

#include "platform/sandbox.h"

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

/// One of the same name takes the place of the one before.
QDBusMessage portalRequest(std::string_view title, std::string_view body) {
    QDBusMessage request =
        QDBusMessage::createMethodCall("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
                                       "org.freedesktop.portal.Notification", "AddNotification");
    request << QStringLiteral("update") << QVariantMap{{"title", text(title)}, {"body", text(body)}};
    return request;
}

QDBusMessage desktopRequest(std::string_view title, std::string_view body, quint32 replaced) {
    QDBusMessage request = QDBusMessage::createMethodCall(service, path, service, "Notify");
    const QVariantMap hints = {{"desktop-entry", "orvanta-usbtool"}};
    request << QStringLiteral("Orvanta USB-Stick Internetupdate Tool") << replaced
            << QStringLiteral("orvanta-usbtool") << text(title) << text(body).toHtmlEscaped() << QStringList()
            << hints << untilTheDesktopSays;
    return request;
}

} // namespace

bool showNotification(std::intptr_t /*window*/, std::string_view title, std::string_view body) {
    static std::optional<QDBusPendingCall> last;
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return false;
    last = bus.asyncCall(isSandboxed() ? portalRequest(title, body)
                                       : desktopRequest(title, body, numberOf(last)));
    return true;
}

} // namespace platform
