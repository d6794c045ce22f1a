#include "tools/fat32format/linux/udisks_access.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>

#include <array>
#include <cctype>
#include <fcntl.h>
#include <limits>

namespace fat32format {

namespace {

using platform::linux::UniqueFd;

/// The service writes what is no letter or digit of ASCII as "_" and two hexadecimal digits.
QString objectOf(const std::string& node) {
    QString object = "/org/freedesktop/UDisks2/block_devices/";
    for (const char c : node.substr(node.rfind('/') + 1)) {
        const auto byte = static_cast<unsigned char>(c);
        if (std::isalnum(byte) != 0)
            object += QChar(byte);
        else
            object += QString("_%1").arg(int{byte}, 2, 16, QChar('0'));
    }
    return object;
}

constexpr int untilSomebodyTypes = std::numeric_limits<int>::max(); // a password
constexpr int withoutAQuestion = 25'000;                            // ms

QDBusMessage call(const std::string& node, const char* interface, const char* method,
                  const QVariantList& arguments, int timeout = untilSomebodyTypes) {
    static std::string name = "fat32format.exe"; // the bus needs an application, and that a command line
    static std::array<char*, 2> words = {name.data(), nullptr};
    static int count = 1;
    static const QCoreApplication application(count, words.data());
    QDBusMessage message =
        QDBusMessage::createMethodCall("org.freedesktop.UDisks2", objectOf(node), interface, method);
    message.setArguments(arguments);
    return QDBusConnection::systemBus().call(message, QDBus::Block, timeout);
}

/// The service tells in its own language why the kernel has refused; that others use the disk is by far the
/// likeliest.
OpenedNode refusal(const QDBusMessage& answer) {
    const QString error = answer.errorName();
    const std::string reason = answer.errorMessage().toStdString();
    if (error.startsWith("org.freedesktop.UDisks2.Error.NotAuthorized"))
        return {Opened::Outcome::NotAllowed, {}, reason};
    if (error.startsWith("org.freedesktop.UDisks2.Error.")) return {Opened::Outcome::InUse, {}, reason};
    return {Opened::Outcome::Failed, {}, "The service UDisks2 cannot be asked to open it: " + reason};
}

} // namespace

OpenedNode openThroughUdisks(const std::string& node, int flags) {
    const bool writes = (flags & O_ACCMODE) == O_RDWR;
    const QVariantMap options = {{"flags", flags & ~O_ACCMODE}};
    const QDBusMessage answer =
        call(node, "org.freedesktop.UDisks2.Block", "OpenDevice", {writes ? "rw" : "r", options});
    if (answer.type() != QDBusMessage::ReplyMessage) return refusal(answer);
    const auto handed = qvariant_cast<QDBusUnixFileDescriptor>(answer.arguments().value(0));
    UniqueFd device(fcntl(handed.fileDescriptor(), F_DUPFD_CLOEXEC, 0)); // NOLINT(*-vararg)
    if (!device) return {};
    return {Opened::Outcome::Done, std::move(device), {}};
}

void rescanThroughUdisks(const std::string& node) {
    call(node, "org.freedesktop.UDisks2.Block", "Rescan", {QVariantMap{{"auth.no_user_interaction", true}}},
         withoutAQuestion);
}

bool unmountThroughUdisks(const std::string& node) {
    return call(node, "org.freedesktop.UDisks2.Filesystem", "Unmount", {QVariantMap()}).type() ==
           QDBusMessage::ReplyMessage;
}

} // namespace fat32format
