#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QProcess>
#include <QString>

#include <array>
#include <memory>
#include <stdexcept>

namespace conformance {

/// A session bus that lives as long as this object and is this process's own from before its first use.
class SessionBus {
public:
    SessionBus() {
        daemon_.start("dbus-daemon", {"--session", "--nofork", "--nopidfile", "--print-address=1"});
        while (!daemon_.canReadLine())
            if (!daemon_.waitForReadyRead(20000)) throw std::runtime_error("the session bus does not start");
        address = QString::fromUtf8(daemon_.readLine().trimmed());
        qputenv("DBUS_SESSION_BUS_ADDRESS", address.toUtf8());
    }
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;
    ~SessionBus() {
        daemon_.kill();
        daemon_.waitForFinished();
    }

    QString address;

private:
    QProcess daemon_;
};

/// Tests that share a session bus of their own, and what Qt needs for it.
class SessionBusTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        static int count = 1;
        static std::array<char, 5> name = {'t', 'e', 's', 't', '\0'};
        static std::array<char*, 2> arguments = {name.data(), nullptr};
        application = std::make_unique<QCoreApplication>(count, arguments.data());
        bus = std::make_unique<SessionBus>();
    }
    static void TearDownTestSuite() {
        QDBusConnection::disconnectFromBus("qt_default_session_bus");
        bus.reset();
        application.reset();
    }

    static inline std::unique_ptr<QCoreApplication> application;
    static inline std::unique_ptr<SessionBus> bus;
};

} // namespace conformance
