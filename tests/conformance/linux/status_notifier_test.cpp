// The icon in a notification area: a desktop's watcher, on a session bus and a screen of the test's own.
#include "base/text.h"
#include "platform/notify_icon.h"

#include "tests/conformance/linux/session_bus.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusVirtualObject>
#include <QDeadlineTimer>
#include <QProcess>
#include <QSize>
#include <QStandardPaths>
#include <QThread>

#include <algorithm>
#include <array>
#include <functional>
#include <memory>
#include <mutex>

using conformance::SessionBus;
using namespace platform;

// The macro declares a function, which must not be in a namespace.
static void loadResources() {
    Q_INIT_RESOURCE(toolkit);
}

namespace {

constexpr int patience = 20'000; // milliseconds
constexpr const char* watcherInterface = "org.kde.StatusNotifierWatcher";
constexpr const char* itemInterface = "org.kde.StatusNotifierItem";

/// What a desktop with a notification area offers; answers in a thread of its own while the program waits.
class Watcher : public QDBusVirtualObject {
public:
    QString introspect(const QString& /*path*/) const override {
        return R"(<interface name="org.kde.StatusNotifierWatcher">
                    <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
                    <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
                  </interface>)";
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.member() == "RegisterStatusNotifierItem") {
            const std::lock_guard lock(mutex_);
            item_ = message.arguments().value(0).toString();
            connection.send(message.createReply());
        } else if (message.member() == "Get") {
            const bool yes = message.arguments().value(1) == "IsStatusNotifierHostRegistered";
            connection.send(
                message.createReply(QVariant::fromValue(QDBusVariant(yes ? QVariant(true) : QVariant(0)))));
        } else {
            return false;
        }
        return true;
    }

    /// The name on the bus of the icon that was added; empty for none.
    QString item() {
        const std::lock_guard lock(mutex_);
        return item_;
    }

private:
    std::mutex mutex_;
    QString item_;
};

/// A screen that nobody sees.
class Screen {
public:
    Screen() {
        server_.start("Xvfb", {"-displayfd", "1", "-screen", "0", "640x480x24", "-nolisten", "tcp"});
        while (!server_.canReadLine())
            if (!server_.waitForReadyRead(patience)) return;
        qputenv("DISPLAY", ":" + server_.readLine().trimmed());
        started = true;
    }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;
    ~Screen() {
        server_.kill();
        server_.waitForFinished();
    }

    bool started = false;

private:
    QProcess server_;
};

NotifyIconRecord record(const std::string& tip, std::uint8_t resource) {
    NotifyIconRecord record{};
    record[notify_record::cbSize] = notify_record::size;
    record[notify_record::hWnd] = 1;
    record[notify_record::uID] = 1;
    record[notify_record::uFlags] = 1 + 2 + 4;
    record[notify_record::hIcon] = resource;
    const std::string ansi = base::toAnsi(tip);
    std::copy(ansi.begin(), ansi.end(), record.begin() + notify_record::szTip);
    return record;
}

class StatusNotifier : public testing::Test {
protected:
    void SetUp() override {
        if (QStandardPaths::findExecutable("Xvfb").isEmpty()) GTEST_SKIP() << "needs Xvfb";
        screen_ = std::make_unique<Screen>();
        ASSERT_TRUE(screen_->started);
        qputenv("QT_QPA_PLATFORM", "xcb");
        qunsetenv("QT_QPA_PLATFORMTHEME");
        bus_ = std::make_unique<SessionBus>();
        watcher_.moveToThread(&thread_);
        thread_.start();
        QDBusConnection connection = QDBusConnection::connectToBus(bus_->address, "watcher");
        ASSERT_TRUE(connection.registerVirtualObject("/StatusNotifierWatcher", &watcher_));
        ASSERT_TRUE(connection.registerService(watcherInterface));
        loadResources();
        application_ = std::make_unique<QApplication>(argumentCount_, arguments_.data());
    }

    void TearDown() override {
        application_.reset();
        QDBusConnection::disconnectFromBus("watcher");
        QDBusConnection::disconnectFromBus("desktop");
        thread_.quit();
        thread_.wait();
    }

    static bool waitFor(const std::function<bool()>& condition) {
        const QDeadlineTimer deadline(patience);
        while (!condition()) {
            if (deadline.hasExpired()) return false;
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        }
        return true;
    }

    /// A property of the icon, as the desktop reads it.
    QVariant property(const QString& name) {
        QDBusConnection desktop = QDBusConnection::connectToBus(bus_->address, "desktop");
        QDBusMessage question = QDBusMessage::createMethodCall(watcher_.item(), "/StatusNotifierItem",
                                                               "org.freedesktop.DBus.Properties", "Get");
        question.setArguments({itemInterface, name});
        QDBusPendingCall answer = desktop.asyncCall(question);
        if (!waitFor([&] { return answer.isFinished(); }) || answer.isError()) return {};
        return answer.reply().arguments().value(0).value<QDBusVariant>().variant();
    }

    /// Sizes of the pictures that the desktop gets.
    QList<QSize> pictures() {
        QList<QSize> sizes;
        const auto argument = property("IconPixmap").value<QDBusArgument>();
        argument.beginArray();
        while (!argument.atEnd()) {
            int width = 0;
            int height = 0;
            QByteArray pixels;
            argument.beginStructure();
            argument >> width >> height >> pixels;
            argument.endStructure();
            if (pixels.size() == 4 * width * height && pixels.count('\0') < pixels.size())
                sizes += QSize(width, height);
        }
        argument.endArray();
        return sizes;
    }

    /// Title of the tip.
    QString tip() {
        QString iconName;
        QString title;
        const auto argument = property("ToolTip").value<QDBusArgument>();
        argument.beginStructure();
        argument >> iconName;
        argument.beginArray();
        while (!argument.atEnd()) {
            int width = 0;
            int height = 0;
            QByteArray pixels;
            argument.beginStructure();
            argument >> width >> height >> pixels;
            argument.endStructure();
        }
        argument.endArray();
        argument >> title;
        return title;
    }

    bool onBus() { return !property("Id").toString().isEmpty(); }

    std::array<char, 5> name_{"test"};
    std::array<char*, 2> arguments_ = {name_.data(), nullptr};
    int argumentCount_ = 1;
    std::unique_ptr<Screen> screen_;
    std::unique_ptr<SessionBus> bus_;
    std::unique_ptr<QApplication> application_;
    QThread thread_;
    Watcher watcher_;
};

} // namespace

TEST_F(StatusNotifier, AnIconIsShownChangedAndRemoved) {
    ASSERT_TRUE(shellNotifyIcon(NotifyIcon::Add, record("Größe", 103)));
    ASSERT_TRUE(waitFor([this] { return !watcher_.item().isEmpty(); })) << "the desktop is told of the icon";
    EXPECT_TRUE(onBus());
    EXPECT_EQ(tip(), "Größe");
    EXPECT_FALSE(pictures().isEmpty());
    EXPECT_FALSE(shellNotifyIcon(NotifyIcon::Add, record("", 103))) << "it is there";

    EXPECT_TRUE(shellNotifyIcon(NotifyIcon::Modify, record("USB-Stick gefunden.", 104)));
    EXPECT_TRUE(waitFor([this] { return tip() == "USB-Stick gefunden."; }));
    EXPECT_FALSE(pictures().isEmpty());

    EXPECT_TRUE(shellNotifyIcon(NotifyIcon::Delete, record("", 0)));
    EXPECT_TRUE(waitFor([this] { return !onBus(); }));
    EXPECT_FALSE(shellNotifyIcon(NotifyIcon::Modify, record("", 104)));
}
