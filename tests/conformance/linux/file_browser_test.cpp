// How a folder is shown on a desktop that has a file browser: one on a session bus of the test's own.
#include "platform/shell.h"

#include "tests/conformance/environment.h"
#include "tests/conformance/linux/session_bus.h"
#include "tests/conformance/linux/temporary_folder.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QThread>

#include <chrono>
#include <fstream>
#include <memory>
#include <mutex>
#include <thread>

using conformance::Drives;
using conformance::TemporaryFolder;
using namespace platform;
namespace fs = std::filesystem;

namespace {

enum class Manner { Shows, Refuses, SaysNothing };

/// The file browser; answers in a thread of its own while the test waits for the answer.
class Browser : public QDBusVirtualObject {
public:
    explicit Browser(Manner manner) : manner_(manner) {}

    QString introspect(const QString& /*path*/) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        const std::lock_guard lock(mutex_);
        requests_ << message.interface() + "." + message.member() + " " + message.signature();
        for (const QString& folder : message.arguments().value(0).toStringList())
            requests_ << folder;
        if (manner_ == Manner::Shows) connection.send(message.createReply());
        if (manner_ == Manner::Refuses)
            connection.send(message.createErrorReply(QDBusError::AccessDenied, "no"));
        return true;
    }

    QStringList requests() {
        const std::lock_guard lock(mutex_);
        return requests_;
    }

private:
    const Manner manner_;
    std::mutex mutex_;
    QStringList requests_;
};

class FileBrowser : public conformance::SessionBusTest {
protected:
    /// What xdg-open is given goes to a file.
    void SetUp() override {
        const fs::path command = commands_.path() / "xdg-open";
        std::ofstream(command) << "#!/bin/sh\nprintf '%s' \"$1\" > \"$(dirname \"$0\")/part\"\n"
                                  "mv \"$(dirname \"$0\")/part\" \"$(dirname \"$0\")/opened\"\n";
        fs::permissions(command, fs::perms::owner_all);
        setenv("PATH", (commands_.path().string() + ":" + path_).c_str(), 1);
    }
    void TearDown() override {
        QDBusConnection::disconnectFromBus("browser");
        thread_.quit();
        thread_.wait();
        setenv("PATH", path_.c_str(), 1);
    }

    void startBrowser(Manner manner) {
        browser = std::make_unique<Browser>(manner);
        browser->moveToThread(&thread_);
        thread_.start();
        QDBusConnection connection = QDBusConnection::connectToBus(bus->address, "browser");
        ASSERT_TRUE(connection.registerVirtualObject("/org/freedesktop/FileManager1", browser.get()));
        ASSERT_TRUE(connection.registerService("org.freedesktop.FileManager1"));
    }

    /// What the command was given, as soon as it was.
    std::string openedByCommand() const {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        const fs::path file = commands_.path() / "opened";
        while (!fs::exists(file) && std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        std::ifstream in(file);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    /// The folder is shown by what is started now, so nothing has been started before.
    void expectNoCommandBefore() const {
        EXPECT_EQ(shellExecute(0, "open", "http://sentinel/", "", "", showNormal), ShellAccepted);
        EXPECT_EQ(openedByCommand(), "http://sentinel/");
    }

    QString address(const char* name) const {
        return "file://" + QString::fromStdString((stick / name / "").string());
    }

    const std::string path_ = getenv("PATH");
    TemporaryFolder commands_;
    QThread thread_;
    std::unique_ptr<Browser> browser;
    Drives drives;
    const fs::path stick = drives.add('E', DriveRemovable);
};

const QString showFolders = "org.freedesktop.FileManager1.ShowFolders ass";

} // namespace

TEST_F(FileBrowser, ShowsTheFolderAndNothingElseIsStarted) {
    startBrowser(Manner::Shows);
    fs::create_directory(stick / "Fotos.desktop");
    EXPECT_EQ(showFolder(0, "E:\\Fotos.desktop"), ShellAccepted);
    EXPECT_EQ(browser->requests(), QStringList({showFolders, address("Fotos.desktop")}));
    expectNoCommandBefore();
}

TEST_F(FileBrowser, IsGivenEveryCharacter) {
    startBrowser(Manner::Shows);
    fs::create_directory(stick / u8"a ä%41#;");
    EXPECT_EQ(showFolder(0, "E:\\a ä%41#;"), ShellAccepted);
    EXPECT_EQ(browser->requests().last(), address("a%20%C3%A4%2541%23%3B"));
}

TEST_F(FileBrowser, IsNotAskedForAFile) {
    startBrowser(Manner::Shows);
    std::ofstream(stick / "Fotos.desktop") << "[Desktop Entry]\n";
    EXPECT_EQ(showFolder(0, "E:\\Fotos.desktop"), ShellPathNotFound);
    EXPECT_EQ(showFolder(0, "E:\\Fotos.desktop\\"), ShellPathNotFound);
    EXPECT_TRUE(browser->requests().isEmpty());
    expectNoCommandBefore();
}

TEST_F(FileBrowser, ThatRefusesLeavesItToTheCommand) {
    startBrowser(Manner::Refuses);
    EXPECT_EQ(showFolder(0, "E:\\"), ShellAccepted);
    EXPECT_EQ(browser->requests().size(), 2);
    EXPECT_EQ(openedByCommand(), (stick / "").string());
}

TEST_F(FileBrowser, ThatIsNotThereLeavesItToTheCommand) {
    EXPECT_EQ(showFolder(0, "E:\\"), ShellAccepted);
    EXPECT_EQ(openedByCommand(), (stick / "").string());
}

TEST_F(FileBrowser, ThatSaysNothingIsNotWaitedForLongAndNotDoubled) {
    startBrowser(Manner::SaysNothing);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(showFolder(0, "E:\\"), ShellAccepted);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(15));
    expectNoCommandBefore();
}
