#include "platform/linux/process/file_browser.h"

#include "platform/linux/base/bus_call.h"

#include <QByteArray>
#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QStringList>

namespace platform::linux {

namespace {

/// A path is bytes here, and its address has each of them.
QString address(const std::string& path) {
    return QStringLiteral("file://") +
           QString::fromLatin1(QByteArray::fromStdString(path).toPercentEncoding("/"));
}

} // namespace

bool askFileBrowserToShow(const std::string& folder) {
    constexpr auto patience = std::chrono::seconds(2);
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return false;
    QDBusMessage request =
        QDBusMessage::createMethodCall("org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
                                       "org.freedesktop.FileManager1", "ShowFolders");
    const QString noStartupId = "";
    request << QStringList{address(folder)} << noStartupId;
    const QDBusMessage reply = callBus(bus, request, patience);
    // One that starts slowly has been asked all the same; a second one must not open beside it.
    return reply.type() == QDBusMessage::ReplyMessage || QDBusError(reply).type() == QDBusError::NoReply;
}

} // namespace platform::linux
