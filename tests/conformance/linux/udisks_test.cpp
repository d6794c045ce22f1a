// The drive table over UDisks2: what it asks, mounts and unmounts.
#include "platform/device_events.h"
#include "platform/linux/drives/volume_folder.h"
#include "platform/volumes.h"

#include "tests/conformance/linux/udisks_table.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QProcess>

#include <sys/stat.h>
#include <sys/statvfs.h>

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
