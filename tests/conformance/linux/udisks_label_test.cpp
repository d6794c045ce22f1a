// The drive table over UDisks2: how a volume is given a label.
#include "tests/conformance/linux/temporary_folder.h"
#include "tests/conformance/linux/udisks_table.h"

#include <QProcess>

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <fstream>
#include <string>

using namespace conformance;
using namespace platform;
using linux::UdisksDrives;

namespace {

[[maybe_unused]] const auto* world = testing::AddGlobalTestEnvironment(new EventWorld);

} // namespace

TEST_F(UdisksTable, LabelOfAnUnmountedVolume) {
    addStick("sdb1", 17);
    EXPECT_TRUE(drives.setLabel('D', "Neu"));
    EXPECT_EQ(calls(), QStringList{"SetLabel sdb1"});
    EXPECT_EQ(drives.names('D')->label, "NEU");
    EXPECT_TRUE(drives.setLabel('D', ""));
    EXPECT_EQ(drives.names('D')->label, "");
}

TEST_F(UdisksTable, LabelOfAMountedVolume) {
    addStick("sdb1", 17);
    mountByDesktop("sdb1");
    EXPECT_TRUE(drives.setLabel('D', "NEU"));
    EXPECT_EQ(calls(), (QStringList{"Unmount sdb1", "SetLabel sdb1", "Mount sdb1"}));
    EXPECT_TRUE(drives.settle('D'));
    drives.release();
    EXPECT_EQ(calls(), QStringList()) << "it is the desktop's again";
}

TEST_F(UdisksTable, LabelOfAVolumeThatTheProgramMounted) {
    addStick("sdb1", 17);
    ASSERT_TRUE(drives.folder('D'));
    calls();
    EXPECT_TRUE(drives.setLabel('D', "NEU"));
    EXPECT_EQ(calls(), (QStringList{"Unmount sdb1", "SetLabel sdb1", "Mount sdb1"}));
    drives.release();
    EXPECT_EQ(calls(), QStringList{"Unmount sdb1"});
}

TEST_F(UdisksTable, LabelThatShowsLate) {
    addStick("sdb1", 17);
    drives.refresh();
    mock.delayLabel(3);
    EXPECT_TRUE(drives.setLabel('D', "late"));
    EXPECT_EQ(drives.names('D')->label, "LATE");
}

/// A stick whose FAT file system is an image; on a loop device where the machine has one for it.
class UdisksUmlauts : public UdisksTable {
protected:
    UdisksUmlauts() {
        std::ofstream(image).close();
        std::filesystem::resize_file(image, 1024UL * 1024);
        EXPECT_EQ(QProcess::execute("/sbin/mkfs.fat", {"-n", "ALT", QString::fromStdString(image)}), 0);
    }
    ~UdisksUmlauts() override {
        if (!device.isEmpty()) QProcess::execute("/sbin/losetup", {"-d", device});
    }
    /// False where that is not allowed.
    bool addOnLoopDevice() {
        QProcess losetup;
        losetup.start("/sbin/losetup", {"-f", "--show", QString::fromStdString(image)});
        if (!losetup.waitForFinished() || losetup.exitCode() != 0) return false;
        device = losetup.readAllStandardOutput().trimmed();
        struct stat status = {};
        EXPECT_EQ(stat(device.toStdString().c_str(), &status), 0);
        mock.setImage(device.toStdString());
        addStick("sdb1", number = status.st_rdev);
        return true;
    }
    std::string bytes() const {
        std::ifstream stream(image, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    TemporaryFolder folder;
    std::filesystem::path image = folder.path() / "image";
    QString device;
    dev_t number = 0;
};

TEST_F(UdisksUmlauts, AreWrittenByTheProgram) {
    if (!addOnLoopDevice()) GTEST_SKIP() << "needs a loop device";
    mountByDesktop("sdb1");
    EXPECT_TRUE(drives.setLabel('D', "Müll"));
    EXPECT_EQ(calls(), (QStringList{"Unmount sdb1", "OpenDevice sdb1", "Mount sdb1"}));
    EXPECT_NE(bytes().find("M\x9A"
                           "LL       \x08"),
              std::string::npos);
    EXPECT_FALSE(drives.setLabel('D', "ü€")) << "a sign that DOS does not have";
    mock.failNext("OpenDevice", "NotAuthorizedDismissed");
    EXPECT_FALSE(drives.setLabel('D', "Öl")) << "the user did not type the password";
    EXPECT_TRUE(isMounted("sdb1"));
}

TEST_F(UdisksUmlauts, AreNotWrittenToWhatIsNoDevice) {
    mock.setImage(image);
    addStick("sdb1", 17);
    const std::string before = bytes();
    EXPECT_FALSE(drives.setLabel('D', "Müll"));
    EXPECT_EQ(calls(), QStringList{"OpenDevice sdb1"});
    EXPECT_TRUE(bytes() == before);
}

TEST_F(UdisksUmlauts, AreNotWrittenToAnotherDevice) {
    if (!addOnLoopDevice()) GTEST_SKIP() << "needs a loop device";
    mock.change(blockPath("sdb1"), blockInterface, {{"DeviceNumber", quint64{17}}});
    const std::string before = bytes();
    EXPECT_FALSE(drives.setLabel('D', "Müll"));
    EXPECT_EQ(calls(), QStringList{"OpenDevice sdb1"});
    EXPECT_TRUE(bytes() == before);
}

TEST_F(UdisksUmlauts, AreNotWrittenToAStickThatCameWhileThePasswordWasTyped) {
    if (!addOnLoopDevice()) GTEST_SKIP() << "needs a loop device";
    const TemporaryFolder devices;
    const std::filesystem::path shown =
        devices.path() / (std::to_string(major(number)) + ':' + std::to_string(minor(number)));
    std::filesystem::create_directory(shown);
    const auto plugIn = [&](int sequence) { std::ofstream(shown / "diskseq") << sequence << '\n'; };
    plugIn(1);
    UdisksDrives table(mock.mountTable(), devices.path());
    const std::string before = bytes();
    mock.whileOpening([&] { plugIn(2); });
    EXPECT_FALSE(table.setLabel('D', "Müll")) << "a copy";
    mock.whileOpening([&] { mock.change(blockPath("sdb1"), blockInterface, {{"IdUUID", "BBBB-0002"}}); });
    EXPECT_FALSE(table.setLabel('D', "Müll")) << "no copy";
    EXPECT_EQ(calls(), (QStringList{"OpenDevice sdb1", "OpenDevice sdb1"}));
    EXPECT_TRUE(bytes() == before);
    mock.whileOpening({});
    EXPECT_TRUE(table.setLabel('D', "Müll"));
    EXPECT_FALSE(bytes() == before);
}

TEST_F(UdisksTable, LabelIsNotGivenToAStickThatCameInBetween) {
    addStick("sdb1", 17);
    ASSERT_NE(drives.identity('D'), "");
    mock.change(blockPath("sdb1"), blockInterface, {{"IdUUID", "BBBB-0002"}});
    EXPECT_FALSE(drives.setLabel('D', "NEU"));
    EXPECT_EQ(calls(), QStringList());
}

TEST_F(UdisksTable, OtherFileSystemsTakeUmlautsThemselves) {
    addStick("sdb1", 17, {{"IdType", "exfat"}, {"IdVersion", "1.0"}});
    EXPECT_TRUE(drives.setLabel('D', "Müll"));
    EXPECT_EQ(calls(), QStringList{"SetLabel sdb1"});
}

TEST_F(UdisksTable, LabelOfAVolumeThatIsBusyForAWhile) {
    addStick("sdb1", 17);
    mountByDesktop("sdb1");
    mock.failNext("Unmount", "DeviceBusy", 10);
    EXPECT_TRUE(drives.setLabel('D', "NEU"));
    mock.failNext("SetLabel", "DeviceBusy", 10);
    EXPECT_TRUE(drives.setLabel('D', "NEUER"));
    EXPECT_EQ(drives.names('D')->label, "NEUER");
}

TEST_F(UdisksTable, LabelThatIsRefused) {
    addStick("sdb1", 17);
    mountByDesktop("sdb1");
    mock.failNext("SetLabel", "Failed");
    EXPECT_FALSE(drives.setLabel('D', "NEU"));
    EXPECT_TRUE(isMounted("sdb1"));
    EXPECT_EQ(drives.names('D')->label, "SDB1");
}

TEST_F(UdisksTable, LabelOfABusyVolume) {
    addStick("sdb1", 17);
    mountByDesktop("sdb1");
    mock.failNext("Unmount", "DeviceBusy", 1000);
    EXPECT_FALSE(drives.setLabel('D', "NEU"));
    EXPECT_FALSE(calls().contains("SetLabel sdb1"));
    EXPECT_TRUE(isMounted("sdb1"));
}
