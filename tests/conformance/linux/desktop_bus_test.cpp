// What the desktop is told of a job: a session bus of the test's own, with somebody who listens.
#include "platform/notification.h"
#include "platform/sandbox.h"
#include "platform/taskbar.h"

#include "tests/conformance/linux/session_bus.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QDeadlineTimer>

using namespace platform;

namespace {

/// A desktop with notifications, which gives them numbers and takes note of them.
class Desktop : public QDBusVirtualObject {
public:
    QString introspect(const QString& /*path*/) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        requests.push_back(message);
        connection.send(message.createReply(QVariant(firstNumber + static_cast<quint32>(requests.size()))));
        return true;
    }

    static constexpr quint32 firstNumber = 7;
    std::vector<QDBusMessage> requests;
};

/// A dock; a slot's name is all that the library can connect a signal to.
class Dock : public QObject {
    Q_OBJECT

public:
    std::vector<QDBusMessage> updates;

public slots:
    void update(const QDBusMessage& message) { updates.push_back(message); }
};

class DesktopBus : public conformance::SessionBusTest {
protected:
    void TearDown() override { QDBusConnection::disconnectFromBus("desktop"); }

    static QDBusConnection connect() { return QDBusConnection::connectToBus(bus->address, "desktop"); }

    template <class Condition>
    static bool waitFor(Condition condition) {
        const QDeadlineTimer deadline(20'000);
        while (!condition()) {
            if (deadline.hasExpired()) return false;
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        }
        return true;
    }
};

} // namespace

/// tests/packages/flatpak_test.py has it run in one.
TEST_F(DesktopBus, FromASandboxThePortalNotifies) {
    if (!isSandboxed()) GTEST_SKIP() << "this is no sandbox";
    QDBusConnection desktop = connect();
    Desktop portal;
    ASSERT_TRUE(desktop.registerVirtualObject("/org/freedesktop/portal/desktop", &portal));
    ASSERT_TRUE(desktop.registerService("org.freedesktop.portal.Desktop"));
    EXPECT_TRUE(showNotification(0, "Update abgeschlossen", "a < b"));
    EXPECT_TRUE(showNotification(0, "Update fehlgeschlagen", ""));
    ASSERT_TRUE(waitFor([&] { return portal.requests.size() == 2; }));
    const QDBusMessage first = portal.requests[0];
    EXPECT_EQ(first.interface() + "." + first.member(),
              "org.freedesktop.portal.Notification.AddNotification");
    EXPECT_EQ(first.signature(), "sa{sv}");
    const auto shown = qdbus_cast<QVariantMap>(first.arguments().value(1));
    EXPECT_EQ(shown.value("title").toString(), "Update abgeschlossen");
    EXPECT_EQ(shown.value("body").toString(), "a < b");
    EXPECT_EQ(portal.requests[1].arguments().value(0), first.arguments().value(0))
        << "it takes the first one's place";
}

TEST_F(DesktopBus, ANotificationHasTitleAndText) {
    if (isSandboxed()) GTEST_SKIP() << "a sandbox asks the portal";
    QDBusConnection desktop = connect();
    Desktop notifications;
    ASSERT_TRUE(desktop.registerVirtualObject("/org/freedesktop/Notifications", &notifications));
    ASSERT_TRUE(desktop.registerService("org.freedesktop.Notifications"));
    EXPECT_TRUE(showNotification(0, "Update abgeschlossen", "a < b & \"ß\""));
    ASSERT_TRUE(waitFor([&] { return notifications.requests.size() == 1; }));
    const QDBusMessage first = notifications.requests[0];
    EXPECT_EQ(first.interface() + "." + first.member(), "org.freedesktop.Notifications.Notify");
    EXPECT_EQ(first.signature(), "susssasa{sv}i");
    EXPECT_EQ(first.arguments().value(1).toUInt(), 0U) << "it replaces none";
    EXPECT_EQ(first.arguments().value(3).toString(), "Update abgeschlossen");
    EXPECT_EQ(first.arguments().value(4).toString(), "a &lt; b &amp; &quot;ß&quot;") << "no markup";
    EXPECT_EQ(qdbus_cast<QVariantMap>(first.arguments().value(6)).value("desktop-entry").toString(),
              "orvanta-usbtool");
}

TEST_F(DesktopBus, ALaterNotificationTakesTheFirstOnesPlace) {
    QDBusConnection desktop = connect();
    Desktop notifications;
    ASSERT_TRUE(desktop.registerVirtualObject("/org/freedesktop/Notifications", &notifications));
    ASSERT_TRUE(desktop.registerService("org.freedesktop.Notifications"));
    // As soon as the number of the one before has come back.
    const bool replaces = waitFor([&] {
        const std::size_t before = notifications.requests.size();
        showNotification(0, "Update abgeschlossen", "");
        waitFor([&] { return notifications.requests.size() > before; });
        return notifications.requests.back().arguments().value(1).toUInt() >= Desktop::firstNumber;
    });
    EXPECT_TRUE(replaces);
}

TEST_F(DesktopBus, ALauncherIsToldOfAKnownShare) {
    QDBusConnection desktop = connect();
    Dock dock;
    ASSERT_TRUE(desktop.connect({}, {}, "com.canonical.Unity.LauncherEntry", "Update", &dock,
                                SLOT(update(QDBusMessage))));
    EXPECT_TRUE(showInTaskbar(0, TaskbarProgress::KnownShare, 0.25));
    EXPECT_TRUE(showInTaskbar(0, TaskbarProgress::UnknownShare, 0.5));
    EXPECT_TRUE(showInTaskbar(0, TaskbarProgress::None, 0));
    ASSERT_TRUE(waitFor([&] { return dock.updates.size() == 3; }));
    std::vector<std::pair<double, bool>> shown;
    for (const QDBusMessage& update : dock.updates) {
        EXPECT_EQ(update.signature(), "sa{sv}");
        EXPECT_EQ(update.arguments().value(0).toString(), "application://orvanta-usbtool.desktop");
        const auto values = qdbus_cast<QVariantMap>(update.arguments().value(1));
        shown.emplace_back(values.value("progress").toDouble(), values.value("progress-visible").toBool());
    }
    EXPECT_EQ(shown, (std::vector<std::pair<double, bool>>{{0.25, true}, {0, false}, {0, false}}));
}

#include "desktop_bus_test.moc"
