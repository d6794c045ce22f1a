// The open-with chooser on Linux: a portal on a session bus of the test's own.
#include "platform/shell.h"

#include "tests/conformance/environment.h"
#include "tests/conformance/linux/session_bus.h"

#include <gtest/gtest.h>

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QDBusVirtualObject>
#include <QThread>

#include <unistd.h>

#include <array>
#include <fstream>
#include <mutex>
#include <optional>

using conformance::Drives;
using namespace platform;

namespace {

const std::string command = "rundll32.exe shell32.dll,OpenAs_RunDLL ";

struct Request {
    QString member;
    QString signature;
    QString parentWindow;
    bool ask = false;
    std::string content; ///< of the file handed over
};

enum class Manner { Accepts, Refuses, SaysNothing };

std::string contentOf(int file) {
    std::array<char, 1000> buffer = {};
    const ssize_t count = pread(file, buffer.data(), buffer.size(), 0);
    return {buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
}

/// The portal; answers in a thread of its own while the test waits for the answer.
class Portal : public QDBusVirtualObject {
public:
    QString introspect(const QString& /*path*/) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        const QVariantList arguments = message.arguments();
        Request seen = {message.interface() + "." + message.member(), message.signature(), {}, false, {}};
        if (arguments.size() == 3) {
            seen.parentWindow = arguments[0].toString();
            seen.content = contentOf(arguments[1].value<QDBusUnixFileDescriptor>().fileDescriptor());
            seen.ask = qdbus_cast<QVariantMap>(arguments[2]).value("ask").toBool();
        }
        const std::lock_guard lock(mutex_);
        request_ = seen;
        if (manner_ == Manner::Accepts)
            connection.send(message.createReply(QVariant::fromValue(QDBusObjectPath("/request/1"))));
        if (manner_ == Manner::Refuses)
            connection.send(message.createErrorReply(QDBusError::AccessDenied, "no"));
        return true;
    }

    void behave(Manner manner) {
        const std::lock_guard lock(mutex_);
        manner_ = manner;
    }
    std::optional<Request> request() {
        const std::lock_guard lock(mutex_);
        return request_;
    }

private:
    std::mutex mutex_;
    Manner manner_ = Manner::Accepts;
    std::optional<Request> request_;
};

class ShellChooser : public conformance::SessionBusTest {
protected:
    void TearDown() override {
        QDBusConnection::disconnectFromBus("portal");
        thread_.quit();
        thread_.wait();
    }

    void startPortal(Manner manner) {
        portal.behave(manner);
        portal.moveToThread(&thread_);
        thread_.start();
        QDBusConnection connection = QDBusConnection::connectToBus(bus->address, "portal");
        ASSERT_TRUE(connection.registerVirtualObject("/org/freedesktop/portal/desktop", &portal));
        ASSERT_TRUE(connection.registerService("org.freedesktop.portal.Desktop"));
    }

    QThread thread_;
    Portal portal;
    Drives drives;
    const std::filesystem::path stick = drives.add('E', DriveRemovable);
};

} // namespace

TEST_F(ShellChooser, AsksThePortalWithTheFileItself) {
    startPortal(Manner::Accepts);
    std::ofstream(stick / "-odd file.odd") << "what is in it";
    EXPECT_TRUE(startOpenWithChooser(command + "E:\\-odd file.odd"));
    const auto request = portal.request();
    ASSERT_TRUE(request);
    EXPECT_EQ(request->member, "org.freedesktop.portal.OpenURI.OpenFile");
    EXPECT_EQ(request->signature, "sha{sv}");
    EXPECT_EQ(request->parentWindow, "");
    EXPECT_TRUE(request->ask);
    EXPECT_EQ(request->content, "what is in it");
}

TEST_F(ShellChooser, OnlyAFileIsOffered) {
    startPortal(Manner::Accepts);
    std::filesystem::create_directory(stick / "folder");
    for (const char* file :
         {"", "E:\\", "E:\\folder", "E:\\missing.odd", "Q:\\file.odd", "http://host.example"})
        EXPECT_FALSE(startOpenWithChooser(command + file)) << file;
    EXPECT_FALSE(portal.request());
}

TEST_F(ShellChooser, OtherCommandLinesStartNothing) {
    startPortal(Manner::Accepts);
    std::ofstream(stick / "file.odd") << "text";
    for (const char* line : {"", "E:\\file.odd", "rundll32.exe shell32.dll,Other E:\\file.odd", "sh -c true"})
        EXPECT_FALSE(startOpenWithChooser(line)) << line;
    EXPECT_FALSE(portal.request());
}

TEST_F(ShellChooser, PortalThatRefuses) {
    startPortal(Manner::Refuses);
    std::ofstream(stick / "file.odd") << "text";
    EXPECT_FALSE(startOpenWithChooser(command + "E:\\file.odd"));
    EXPECT_TRUE(portal.request());
}

TEST_F(ShellChooser, PortalThatSaysNothingIsNotWaitedForLong) {
    startPortal(Manner::SaysNothing);
    std::ofstream(stick / "file.odd") << "text";
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(startOpenWithChooser(command + "E:\\file.odd"));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(15));
}

TEST_F(ShellChooser, NoPortalOnTheBus) {
    std::ofstream(stick / "file.odd") << "text";
    EXPECT_FALSE(startOpenWithChooser(command + "E:\\file.odd"));
}
