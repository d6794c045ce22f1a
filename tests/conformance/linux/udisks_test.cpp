// The drive table over UDisks2: what it asks, mounts, unmounts and labels.
#include "platform/device_events.h"
#include "platform/linux/drives/disk_note.h"
#include "platform/linux/drives/udisks_drives.h"
#include "platform/linux/drives/volume_folder.h"
#include "platform/volumes.h"

#include "tests/conformance/linux/event_loop.h"
#include "tests/conformance/linux/temporary_folder.h"
#include "tests/conformance/linux/udisks_mock.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusArgument>
#include <QProcess>

#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <thread>
#include <tuple>

using namespace conformance;
using namespace platform;
using linux::UdisksDrives;
using namespace std::chrono_literals;

namespace {

[[maybe_unused]] const auto* world = testing::AddGlobalTestEnvironment(new EventWorld);

/// Runs this file's program as one that uses a stick and ends.
constexpr const char* asProgram = "--use-stick-and-end";

std::intptr_t ignoreMessage(std::intptr_t /*window*/, std::uint32_t /*message*/, std::uintptr_t /*wParam*/,
                            std::intptr_t /*lParam*/) {
    return 0;
}

/// The same with that list of mounts, as soon as the stick is in it.
int useStickAtOnceAndEnd(int argc, char** argv) {
    UdisksDrives drives(argv[2]);
    {
        const QCoreApplication application(argc, argv);
        if (!drives.folder('D')) return EXIT_FAILURE;
    }
    drives.release();
    return EXIT_SUCCESS;
}

/// Only a process of its own can lose its application: the stand-in's thread would not survive that.
int useStickAndEnd(int argc, char** argv) {
    if (argc == 3) return useStickAtOnceAndEnd(argc, argv);
    {
        const QCoreApplication application(argc, argv);
        setWindowProcedure(1, ignoreMessage); // so the bus is listened to, as for the main window
        DiskFreeSpace space;
        if (!diskFreeSpace("D:\\", space)) return EXIT_FAILURE;
    }
    releaseVolumes();
    return EXIT_SUCCESS;
}

/// That of "/", as the kernel lists it; empty where "/" is no mount point, as in a build chroot.
std::string rootFileSystem() {
    std::ifstream mounts("/proc/self/mounts");
    std::string root;
    std::string device, folder, type, rest;
    while (mounts >> device >> folder >> type && std::getline(mounts, rest))
        if (folder == "/") root = type;
    return root;
}

class UdisksTable : public testing::Test {
protected:
    void addStick(const QString& name, quint64 number, const QVariantMap& more = {}) {
        mock.add(drivePath("drive_" + name), stickDrive("S" + name));
        mock.add(blockPath(name), fileSystemBlock(name, number, "drive_" + name, more));
    }
    /// As the desktop does it.
    void mountByDesktop(const QString& name) {
        const std::filesystem::path folder = mock.mountFolder(name);
        std::filesystem::create_directories(folder);
        mock.change(blockPath(name), fileSystemInterface, mountedAt({QByteArray::fromStdString(folder)}));
    }
    bool isMounted(const QString& name) {
        const QVariant folders = mock.property(blockPath(name), fileSystemInterface, "MountPoints");
        return !qdbus_cast<QByteArrayList>(folders).isEmpty();
    }
    QStringList calls() { return mock.takeCalls(); }
    std::thread answerMountsSoon() {
        return std::thread([this] {
            std::this_thread::sleep_for(50ms);
            mock.answerMounts();
        });
    }

    UdisksMock mock;
    UdisksDrives drives;
};

} // namespace

TEST_F(UdisksTable, SystemDrivesAreAlwaysThere) {
    EXPECT_EQ(drives.letters(), "CZ");
    EXPECT_EQ(drives.type('C'), DriveFixed);
    EXPECT_EQ(drives.type('Z'), DriveRemote);
    EXPECT_EQ(drives.type('D'), DriveNoRootDir);
    for (const char letter : {'C', 'Z'}) {
        EXPECT_EQ(drives.folder(letter), "/");
        struct statvfs root = {};
        ASSERT_EQ(statvfs("/", &root), 0);
        EXPECT_EQ(drives.space(letter)->total, std::uint64_t{root.f_frsize} * root.f_blocks);
        EXPECT_EQ(drives.names(letter)->fileSystem, rootFileSystem());
        EXPECT_FALSE(drives.setLabel(letter, "NO"));
    }
    EXPECT_EQ(calls(), QStringList());
}

TEST_F(UdisksTable, RootVolumeIsC) {
    mock.add(drivePath("ssd"), drive("SSD"));
    mock.add(blockPath("sda2"),
             fileSystemBlock("sda2", 2, "ssd",
                             {{"HintSystem", true}, {"IdType", "ext4"}, {"IdLabel", "system"}}, {"/"}));
    EXPECT_EQ(drives.letters(), "CZ");
    EXPECT_EQ(drives.names('C')->label, "system");
    EXPECT_EQ(drives.names('C')->fileSystem, "ext4");
    EXPECT_EQ(drives.target('C'), "/dev/sda2");
}

TEST_F(UdisksTable, SticksGetLettersAndKeepThem) {
    addStick("sdb1", 17);
    EXPECT_EQ(drives.letters(), "CDZ");
    EXPECT_EQ(drives.type('D'), DriveRemovable);
    addStick("sda1", 1);
    drives.refresh();
    EXPECT_EQ(drives.letters(), "CDEZ");
    EXPECT_EQ(drives.target('D'), "/dev/sdb1");
    EXPECT_EQ(drives.target('E'), "/dev/sda1");
    mock.remove(blockPath("sdb1"));
    drives.refresh();
    EXPECT_EQ(drives.letters(), "CEZ");
}

TEST_F(UdisksTable, ScanIsOneRoundTrip) {
    for (int i = 0; i < 13; ++i) {
        const QString name = "sdb" + QString::number(i);
        addStick(name, static_cast<quint64>(i));
        mountByDesktop(name);
    }
    drives.refresh();
    EXPECT_EQ(drives.letters().size(), 15U);
    for (const char letter : drives.letters()) {
        (void)drives.type(letter);
        EXPECT_TRUE(drives.space(letter)) << letter;
        EXPECT_TRUE(drives.names(letter)) << letter;
    }
    EXPECT_EQ(mock.takeLists(), 1);
    EXPECT_EQ(calls(), QStringList());
}

TEST_F(UdisksTable, MeasuringMountsOnceAndSettlingUnmounts) {
    addStick("sdb1", 17);
    EXPECT_EQ(drives.names('D')->label, "SDB1");
    EXPECT_EQ(calls(), QStringList()); // a label needs no mount
    EXPECT_TRUE(drives.space('D'));
    EXPECT_EQ(drives.folder('D'), mock.mountFolder("sdb1"));
    drives.refresh();
    EXPECT_TRUE(drives.space('D'));
    EXPECT_EQ(calls(), QStringList{"Mount sdb1"});
    EXPECT_TRUE(drives.settle('D'));
    EXPECT_EQ(calls(), QStringList{"Unmount sdb1"});
    EXPECT_TRUE(drives.settle('D'));
    EXPECT_EQ(calls(), QStringList());
    EXPECT_EQ(drives.folder('D'), mock.mountFolder("sdb1"));
    EXPECT_EQ(calls(), QStringList{"Mount sdb1"});
    EXPECT_TRUE(mock.wasQuiet());
}

TEST_F(UdisksTable, SettlingUnmountsWhatWasOnlyMeasured) {
    addStick("sdb1", 17);
    addStick("sdc1", 33);
    EXPECT_TRUE(drives.space('D'));
    EXPECT_TRUE(drives.space('E'));
    EXPECT_TRUE(drives.settle('D'));
    EXPECT_FALSE(isMounted("sdb1"));
    EXPECT_FALSE(isMounted("sdc1"));
}

TEST_F(UdisksTable, WhatTheDesktopMountedStaysMounted) {
    addStick("sdb1", 17);
    mountByDesktop("sdb1");
    EXPECT_TRUE(drives.space('D'));
    EXPECT_TRUE(drives.settle('D'));
    drives.release();
    EXPECT_EQ(calls(), QStringList());
    EXPECT_TRUE(isMounted("sdb1"));
}

TEST_F(UdisksTable, DesktopThatMountsAtTheSameMoment) {
    addStick("sdb1", 17);
    drives.refresh();
    mock.mountBehindTheBack(blockPath("sdb1"));
    EXPECT_EQ(drives.folder('D'), mock.mountFolder("sdb1"));
    EXPECT_EQ(calls(), QStringList{"Mount sdb1"});
    drives.release();
    EXPECT_EQ(calls(), QStringList());
}

TEST_F(UdisksTable, DesktopThatMountsAtTheSameMomentShowsLate) {
    addStick("sdb1", 17);
    addStick("sdc1", 33);
    for (const auto& [letter, name, error] :
         {std::tuple('D', "sdb1", "Failed"), std::tuple('E', "sdc1", "DeviceBusy")}) {
        drives.refresh();
        mock.mountBehindTheBack(blockPath(name), error);
        mock.delayMounts(2);
        EXPECT_EQ(drives.folder(letter), mock.mountFolder(name));
        EXPECT_EQ(calls(), QStringList{QString("Mount ") + name});
    }
    drives.release();
    EXPECT_EQ(calls(), QStringList()) << "they are the desktop's";
}

TEST_F(UdisksTable, VolumeIsUsedAsSoonAsItIsMounted) {
    UdisksDrives eager(mock.mountTable());
    addStick("sdb1", mock.mountDevice());
    mock.holdMounts();
    EXPECT_EQ(eager.folder('D'), mock.mountFolder("sdb1"));
    EXPECT_TRUE(eager.space('D'));
    eager.refresh();
    EXPECT_EQ(eager.folder('D'), mock.mountFolder("sdb1"));
    EXPECT_EQ(calls(), QStringList{"Mount sdb1"});
    // What comes next has to wait for the service.
    std::thread service = answerMountsSoon();
    eager.release();
    service.join();
    EXPECT_EQ(calls(), (QStringList{"answer", "Unmount sdb1"}));
    EXPECT_FALSE(isMounted("sdb1"));
}

TEST_F(UdisksTable, LabelWaitsForTheAnswerToTheMount) {
    UdisksDrives eager(mock.mountTable());
    addStick("sdb1", mock.mountDevice());
    mock.holdMounts();
    ASSERT_TRUE(eager.folder('D'));
    calls();
    std::thread service = answerMountsSoon();
    EXPECT_TRUE(eager.setLabel('D', "OTHER"));
    service.join();
    EXPECT_EQ(calls(), (QStringList{"answer", "Unmount sdb1", "SetLabel sdb1", "Mount sdb1"}));
    eager.release();
    EXPECT_EQ(calls(), QStringList{"Unmount sdb1"}) << "it is still the program's";
}

TEST_F(UdisksTable, MountOfTheDesktopThatTheAnswerTells) {
    UdisksDrives eager(mock.mountTable());
    addStick("sdb1", mock.mountDevice());
    eager.refresh();
    mock.holdMounts();
    mock.mountBehindTheBack(blockPath("sdb1"));
    EXPECT_EQ(eager.folder('D'), mock.mountFolder("sdb1"));
    mock.answerMounts();
    eager.release();
    EXPECT_EQ(calls(), (QStringList{"Mount sdb1", "answer"}));
    EXPECT_TRUE(isMounted("sdb1"));
}

TEST_F(UdisksTable, MountOfTheDesktopThatOnlyTheKernelShows) {
    UdisksDrives eager(mock.mountTable());
    addStick("sdb1", mock.mountDevice());
    eager.refresh();
    mock.mountInKernel("sdb1");
    EXPECT_EQ(eager.folder('D'), mock.mountFolder("sdb1"));
    eager.release();
    EXPECT_EQ(calls(), QStringList());
}

/// A stick that was pulled without notice may still be in the kernel's list under the name of the next one.
TEST_F(UdisksTable, MountOfAnotherDeviceOfThatNameIsNotUsed) {
    UdisksDrives eager(mock.mountTable());
    addStick("sdb1", mock.mountDevice() + 1);
    const std::string stale = mock.mountInKernel("sdb1");
    EXPECT_TRUE(eager.folder('D'));
    EXPECT_EQ(calls(), QStringList{"Mount sdb1"});
    EXPECT_EQ(linux::mountPointOf("/dev/sdb1", mock.mountDevice(), mock.mountTable()), stale);
    EXPECT_EQ(linux::mountPointOf("/dev/sdb1", mock.mountDevice() + 1, mock.mountTable()), std::nullopt);
    EXPECT_EQ(linux::mountPointOf("/dev/sdb", mock.mountDevice(), mock.mountTable()), std::nullopt);
    EXPECT_EQ(linux::mountPointOf("/dev/sdb1", mock.mountDevice(), "/no/such/list"), std::nullopt);
}

TEST_F(UdisksTable, MountPointWithABlank) {
    const std::filesystem::path folder = mock.mountFolder("STICK ONE");
    std::filesystem::create_directories(folder);
    std::string escaped = folder;
    escaped.replace(escaped.find(' '), 1, "\\040");
    std::ofstream(mock.mountTable()) << "/dev/sdb1 " << escaped << " vfat rw 0 0\n";
    EXPECT_EQ(linux::mountPointOf("/dev/sdb1", mock.mountDevice(), mock.mountTable()), folder);
}

TEST_F(UdisksTable, MountThatShowsLateStaysTheProgramsOwn) {
    addStick("sdb1", 17);
    mock.delayMounts(1000);
    ASSERT_TRUE(drives.folder('D'));
    drives.refresh();
    EXPECT_FALSE(isMounted("sdb1")) << "the service has not noticed yet";
    EXPECT_EQ(drives.folder('D'), mock.mountFolder("sdb1"));
    EXPECT_EQ(calls(), QStringList{"Mount sdb1"});
    mock.showMounts();
    EXPECT_TRUE(drives.settle('D'));
    EXPECT_EQ(calls(), QStringList{"Unmount sdb1"});
    mock.delayMounts(1000);
    ASSERT_TRUE(drives.folder('D'));
    drives.refresh();
    mock.showMounts();
    calls();
    drives.release();
    EXPECT_EQ(calls(), QStringList{"Unmount sdb1"});
}

TEST_F(UdisksTable, ReleaseUnmountsWhatTheProgramMounted) {
    addStick("sdb1", 17);
    addStick("sdc1", 33);
    addStick("sdd1", 49);
    mountByDesktop("sdd1");
    for (const char letter : {'D', 'E', 'F'})
        EXPECT_TRUE(drives.folder(letter)) << letter;
    calls();
    drives.release();
    EXPECT_EQ(calls(), (QStringList{"Unmount sdb1", "Unmount sdc1"}));
}

TEST_F(UdisksTable, ReleaseNeedsNoApplication) {
    addStick("sdb1", 17);
    EXPECT_EQ(QProcess::execute(QCoreApplication::applicationFilePath(), {asProgram}), EXIT_SUCCESS);
    EXPECT_EQ(calls(), (QStringList{"Mount sdb1", "Unmount sdb1"}));
    EXPECT_FALSE(isMounted("sdb1"));
}

TEST_F(UdisksTable, ReleaseWithoutApplicationWaitsForTheAnswerToTheMount) {
    addStick("sdb1", mock.mountDevice());
    mock.holdMounts();
    QProcess program;
    program.start(QCoreApplication::applicationFilePath(),
                  {asProgram, QString::fromStdString(mock.mountTable())});
    QStringList all;
    ASSERT_TRUE(waitFor([this, &all] { return (all += calls()).contains("Mount sdb1"); }));
    EXPECT_FALSE(program.waitForFinished(200));
    mock.answerMounts();
    ASSERT_TRUE(program.waitForFinished());
    EXPECT_EQ(program.exitCode(), EXIT_SUCCESS);
    EXPECT_EQ(all += calls(), (QStringList{"Mount sdb1", "answer", "Unmount sdb1"}));
    EXPECT_FALSE(isMounted("sdb1"));
}

TEST_F(UdisksTable, MountThatIsRefusedIsNoMedium) {
    addStick("sdb1", 17);
    mock.failNext("Mount", "NotAuthorized");
    EXPECT_FALSE(drives.space('D'));
    EXPECT_TRUE(drives.space('D'));
}

TEST_F(UdisksTable, BusyVolumeIsTriedAgain) {
    addStick("sdb1", 17);
    ASSERT_TRUE(drives.folder('D'));
    mock.failNext("Unmount", "DeviceBusy", 2);
    EXPECT_TRUE(drives.settle('D'));
    EXPECT_FALSE(isMounted("sdb1"));
}

TEST_F(UdisksTable, VolumeThatStaysBusyIsSyncedAndStaysMounted) {
    addStick("sdb1", 17);
    ASSERT_TRUE(drives.folder('D'));
    mock.failNext("Unmount", "DeviceBusy", 1000);
    EXPECT_TRUE(drives.settle('D'));
    EXPECT_TRUE(isMounted("sdb1"));
    EXPECT_EQ(drives.folder('D'), mock.mountFolder("sdb1"));
    mock.failNext("Unmount", "", 0);
    EXPECT_TRUE(drives.settle('D')); // still known as the program's own
    EXPECT_FALSE(isMounted("sdb1"));
}

TEST_F(UdisksTable, EmptySlotHasALetterAndNothingElse) {
    mock.add(drivePath("reader"), stickDrive("R"));
    mock.add(blockPath("sdb"), blankBlock("sdb", 16, "reader", {{"Size", quint64{0}}}));
    EXPECT_EQ(drives.letters(), "CDZ");
    EXPECT_EQ(drives.type('D'), DriveRemovable);
    EXPECT_FALSE(drives.space('D'));
    EXPECT_FALSE(drives.names('D'));
    EXPECT_FALSE(drives.settle('D'));
    EXPECT_FALSE(drives.setLabel('D', "X"));
    EXPECT_TRUE(drives.present().empty());
    EXPECT_EQ(calls(), QStringList());
}

TEST_F(UdisksTable, BlankDiskHasALetterButNoNames) {
    mock.add(drivePath("disk"), drive("R"));
    mock.add(blockPath("sdb"), blankBlock("sdb", 16, "disk"));
    EXPECT_EQ(drives.type('D'), DriveFixed);
    EXPECT_FALSE(drives.space('D'));
    EXPECT_FALSE(drives.names('D'));
    ASSERT_EQ(drives.present().size(), 1U);
    EXPECT_FALSE(drives.present()[0].recognised);
    EXPECT_EQ(calls(), QStringList());
}

TEST_F(UdisksTable, PulledStickIsNoticedByItsFolder) {
    addStick("sdb1", 17);
    ASSERT_TRUE(drives.folder('D'));
    mock.remove(blockPath("sdb1"));
    EXPECT_FALSE(drives.folder('D'));
    EXPECT_FALSE(drives.settle('D'));
    EXPECT_EQ(drives.letters(), "CZ");
}

TEST_F(UdisksTable, VolumeThatWasUnmountedElsewhereIsMountedAgain) {
    addStick("sdb1", 17);
    ASSERT_TRUE(drives.folder('D'));
    std::filesystem::remove_all(mock.mountFolder("sdb1"));
    mock.change(blockPath("sdb1"), fileSystemInterface, mountedAt({}));
    calls();
    EXPECT_TRUE(drives.folder('D'));
    EXPECT_EQ(calls(), QStringList{"Mount sdb1"});
}

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

/// A stick in that port, a copy of every other one: only the kernel's number tells them apart.
TEST_F(UdisksTable, IdentityOfCopiesThatFollowEachOther) {
    const TemporaryFolder devices;
    const auto plugIn = [&devices](const char* sequence) {
        std::filesystem::create_directories(devices.path() / "0:17");
        std::ofstream(devices.path() / "0:17" / "diskseq") << sequence << '\n';
    };
    UdisksDrives table("/proc/self/mounts", devices.path());
    addStick("sdb1", 17);
    plugIn("5");
    table.refresh();
    const std::string first = table.identity('D');
    EXPECT_NE(first, "");
    plugIn("6");
    EXPECT_NE(table.identity('D'), first) << "also before the service has noticed";
    plugIn("5");
    EXPECT_EQ(table.identity('D'), first);
}

/// A disk in the place of another one, which the service takes notice of later.
TEST_F(UdisksTable, DiskIsTheOneThatWasListedFirst) {
    const TemporaryFolder devices;
    std::filesystem::create_directories(devices.path() / "0:17");
    std::ofstream(devices.path() / "0:17" / "size") << "1000\n";
    const auto plugIn = [&devices](const char* sequence) {
        std::ofstream(devices.path() / "0:17" / "diskseq") << sequence << '\n';
    };
    UdisksDrives table("/proc/self/mounts", devices.path());
    plugIn("5");
    mock.add(drivePath("disk"), drive("WD 1"));
    mock.add(blockPath("sdb"), blankBlock("sdb", 17, "disk"));
    table.refresh();
    EXPECT_EQ(table.disk('D'), "sequence=5,size=512000,serial=WD%201");
    plugIn("6");
    table.refresh();
    EXPECT_EQ(table.disk('D'), "sequence=5,size=512000,serial=WD%201");
    mock.remove(blockPath("sdb"));
    mock.remove(drivePath("disk"));
    mock.add(drivePath("other"), drive("WD 1", {{"TimeDetected", quint64{1'700'000'060'000'000}}}));
    mock.add(blockPath("sdb"), blankBlock("sdb", 17, "other"));
    table.refresh();
    const char letter = table.letters().at(1);
    ASSERT_EQ(table.target(letter), "/dev/sdb");
    EXPECT_EQ(table.disk(letter), "sequence=6,size=512000,serial=WD%201");
    EXPECT_EQ(table.disk('C'), "");
    EXPECT_EQ(table.disk('Z'), "");
}

/// A reader stays when its card is changed.
TEST_F(UdisksTable, DiskOfAMediumThatCanBeChangedIsThePresentOne) {
    const TemporaryFolder devices;
    std::filesystem::create_directories(devices.path() / "0:17");
    std::ofstream(devices.path() / "0:17" / "size") << "1000\n";
    UdisksDrives table("/proc/self/mounts", devices.path());
    addStick("sdb1", 17);
    for (const std::string sequence : {"5", "6"}) {
        std::ofstream(devices.path() / "0:17" / "diskseq") << sequence << '\n';
        table.refresh();
        EXPECT_TRUE(table.disk('D').starts_with("sequence=" + sequence + ',')) << table.disk('D');
    }
}

TEST(DiskNote, IsThatOfTheWholeDisk) {
    const TemporaryFolder devices;
    std::filesystem::create_directories(devices.path() / "sdb" / "sdb1");
    std::filesystem::create_directory_symlink("sdb", devices.path() / "8:16");
    std::filesystem::create_directory_symlink("sdb/sdb1", devices.path() / "8:17");
    std::ofstream(devices.path() / "sdb" / "diskseq") << "12\n";
    std::ofstream(devices.path() / "sdb" / "size") << "2000\n";
    std::ofstream(devices.path() / "sdb" / "sdb1" / "size") << "1000\n";
    std::ofstream(devices.path() / "sdb" / "sdb1" / "partition") << "1\n";
    const std::string note = "sequence=12,size=1024000,serial=";
    EXPECT_EQ(linux::diskNote(8 * 256 + 16, "", devices.path()), note);
    EXPECT_EQ(linux::diskNote(8 * 256 + 17, "", devices.path()), note);
    EXPECT_EQ(linux::diskNote(8 * 256 + 17, "a,b=/%ü_Z.-9", devices.path()),
              note + "a%2Cb%3D%2F%25%C3%BC_Z.-9");
    EXPECT_EQ(linux::diskNote(8 * 256 + 18, "", devices.path()), "");
    std::filesystem::remove(devices.path() / "sdb" / "diskseq");
    EXPECT_EQ(linux::diskNote(8 * 256 + 17, "", devices.path()), "");
}

TEST_F(UdisksTable, SequenceOfAPartitionIsThatOfItsDisk) {
    const TemporaryFolder devices;
    std::filesystem::create_directories(devices.path() / "sdb" / "sdb1");
    std::filesystem::create_directory_symlink("sdb", devices.path() / "8:16");
    std::filesystem::create_directory_symlink("sdb/sdb1", devices.path() / "8:17");
    std::ofstream(devices.path() / "sdb" / "diskseq") << "12\n";
    EXPECT_EQ(linux::diskSequence(8 * 256 + 16, devices.path()), "12");
    EXPECT_EQ(linux::diskSequence(8 * 256 + 17, devices.path()), "12");
    EXPECT_EQ(linux::diskSequence(8 * 256 + 18, devices.path()), "");
}

TEST_F(UdisksTable, IdentityChangesWithWhatIsInTheDrive) {
    addStick("sdb1", 17);
    const std::string first = drives.identity('D');
    mock.change(blockPath("sdb1"), blockInterface, {{"IdLabel", "NEW"}});
    drives.refresh();
    EXPECT_EQ(drives.identity('D'), first) << "a label is no other stick";
    const QVariantMap changes = {
        {"IdUUID", "BBBB-0002"}, {"DeviceNumber", quint64{18}}, {"Size", quint64{5'000'000'000}}};
    for (auto change = changes.begin(); change != changes.end(); ++change) {
        const std::string before = drives.identity('D');
        mock.change(blockPath("sdb1"), blockInterface, {{change.key(), change.value()}});
        drives.refresh();
        EXPECT_NE(drives.identity('D'), before) << change.key().toStdString();
    }
    mock.change(blockPath("sdb1"), blockInterface, {{"Size", quint64{0}}});
    drives.refresh();
    EXPECT_EQ(drives.identity('D'), "") << "without a medium";
    EXPECT_EQ(drives.identity('E'), "");
    EXPECT_NE(drives.identity('C'), "");
}

TEST_F(UdisksTable, BlankDiskHasAnIdentity) {
    mock.add(drivePath("disk"), drive("BLANK"));
    mock.add(blockPath("sdb"), blankBlock("sdb", 16, "disk"));
    const std::string blank = drives.identity('D');
    EXPECT_NE(blank, "");
    mock.remove(blockPath("sdb"));
    mock.remove(drivePath("disk"));
    mock.add(drivePath("other"), drive("OTHER"));
    mock.add(blockPath("sdb"), blankBlock("sdb", 16, "other"));
    drives.refresh();
    ASSERT_EQ(drives.target('E'), "/dev/sdb");
    EXPECT_NE(drives.identity('E'), blank);
    EXPECT_EQ(drives.identity('D'), "");
}

TEST_F(UdisksTable, RootOfAVolumeIsKnownByItsDevice) {
    addStick("sdb1", mock.mountDevice());
    addStick("sdc1", mock.mountDevice() + 1);
    struct stat folder = {};
    ASSERT_EQ(stat(drives.folder('D')->c_str(), &folder), 0);
    EXPECT_TRUE(drives.isRoot('D', folder));
    EXPECT_FALSE(drives.isRoot('E', folder));
    EXPECT_FALSE(drives.isRoot('F', folder));
    ASSERT_EQ(stat("/", &folder), 0);
    EXPECT_TRUE(drives.isRoot('C', folder));
}

TEST_F(UdisksTable, WithoutTheServiceOnlyTheSystemDrives) {
    addStick("sdb1", 17);
    EXPECT_TRUE(drives.folder('D'));
    EXPECT_EQ(drives.missing(), "");
    mock.stop();
    testing::internal::CaptureStderr();
    drives.refresh();
    drives.refresh();
    const std::string sentence =
        "USB-Sticks werden nicht erkannt: Der Dienst UDisks2 fehlt. Installieren Sie "
        "das Paket \"udisks2\".";
    EXPECT_EQ(drives.missing(), sentence);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "orvanta-usbtool: " + sentence + "\n") << "told once";
    EXPECT_EQ(drives.letters(), "CZ");
    EXPECT_FALSE(drives.folder('D'));
    EXPECT_TRUE(drives.space('C'));
    mock.start();
    drives.refresh();
    EXPECT_EQ(drives.missing(), "");
    EXPECT_EQ(drives.letters(), "CDZ");
    calls();
    drives.release();
    EXPECT_EQ(calls(), QStringList{"Unmount sdb1"}) << "the program has not forgotten what it mounted";
}

int main(int argc, char** argv) {
    if (argc >= 2 && argv[1] == std::string_view(asProgram)) return useStickAndEnd(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
