#pragma once

#include <QProcess>
#include <QString>

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

} // namespace conformance
