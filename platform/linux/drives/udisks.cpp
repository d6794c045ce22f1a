#include "platform/linux/drives/udisks.h"

#include "platform/blocking.h"
#include "platform/linux/base/bus_call.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>

#include <chrono>
#include <fcntl.h>

namespace platform::linux::udisks {

namespace {

using namespace std::chrono_literals;

constexpr const char* blockInterface = "org.freedesktop.UDisks2.Block";
constexpr const char* fileSystemInterface = "org.freedesktop.UDisks2.Filesystem";

// As long as the bus waits for a service that it starts.
constexpr auto timeout = 25s;

QDBusMessage request(const QString& object, const char* method) {
    return QDBusMessage::createMethodCall(service, object, fileSystemInterface, method);
}

/// The program measures drives without being told to, so a question for a password would come out of the
/// blue.
QVariantMap quietly() {
    return {{"auth.no_user_interaction", true}};
}

QDBusMessage answerTo(const QDBusMessage& message) {
    return callBus(QDBusConnection::systemBus(), message, timeout);
}

Outcome outcomeOf(const QDBusMessage& answer) {
    if (answer.type() == QDBusMessage::ReplyMessage) return Outcome::Done;
    const QString error = answer.errorName();
    if (error == "org.freedesktop.UDisks2.Error.AlreadyMounted") return Outcome::AlreadyMounted;
    // Of its tools' troubles the service only hands on what they say.
    const bool busy = answer.errorMessage().contains("busy", Qt::CaseInsensitive);
    if (busy || error == "org.freedesktop.UDisks2.Error.DeviceBusy") return Outcome::Busy;
    return Outcome::Failed;
}

} // namespace

Everything managedObjects() {
    if (!QDBusConnection::systemBus().isConnected()) return {{}, Missing::Bus};
    const QDBusMessage answer = answerTo(QDBusMessage::createMethodCall(
        service, managerPath, "org.freedesktop.DBus.ObjectManager", "GetManagedObjects"));
    const QString error = answer.errorName();
    if (error == "org.freedesktop.DBus.Error.ServiceUnknown" || error.contains(".Spawn."))
        return {{}, Missing::Service};
    if (answer.type() != QDBusMessage::ReplyMessage || answer.signature() != "a{oa{sa{sv}}}")
        return {{}, Missing::Answer};
    return {qdbus_cast<Objects>(answer.arguments().constFirst())};
}

QDBusPendingCall startMount(const QString& object) {
    QDBusMessage message = request(object, "Mount");
    message << quietly();
    return QDBusConnection::systemBus().asyncCall(
        message, static_cast<int>(std::chrono::milliseconds(timeout).count()));
}

MountAnswer mountAnswer(QDBusPendingCall& asked) {
    blocking([asked]() mutable { asked.waitForFinished(); });
    const QDBusMessage answer = asked.reply();
    const Outcome outcome = outcomeOf(answer);
    if (outcome != Outcome::Done) return {outcome, {}};
    return {outcome, answer.arguments().value(0).toString()};
}

Outcome unmount(const QString& object) {
    QDBusMessage message = request(object, "Unmount");
    message << quietly();
    return outcomeOf(answerTo(message));
}

Outcome setLabel(const QString& object, const QString& label) {
    QDBusMessage message = request(object, "SetLabel");
    message << label << quietly();
    return outcomeOf(answerTo(message));
}

OpenedDevice openDevice(const QString& object) {
    constexpr auto timeToAnswer = 120s; // somebody types a password
    QDBusMessage message = QDBusMessage::createMethodCall(service, object, blockInterface, "OpenDevice");
    message << "rw"
            << QVariantMap{{"flags", O_EXCL}}; // the kernel's word that nobody has mounted it meanwhile
    message.setInteractiveAuthorizationAllowed(true);
    const QDBusMessage answer = callBus(QDBusConnection::systemBus(), message, timeToAnswer);
    const Outcome outcome = outcomeOf(answer);
    const auto device = answer.arguments().value(0).value<QDBusUnixFileDescriptor>();
    if (outcome != Outcome::Done || !device.isValid())
        return {outcome == Outcome::Done ? Outcome::Failed : outcome, {}};
    return {outcome, UniqueFd(fcntl(device.fileDescriptor(), F_DUPFD_CLOEXEC, 0))};
}

} // namespace platform::linux::udisks
