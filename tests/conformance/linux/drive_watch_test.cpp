// Messages about drives that come and go, and the window procedures that they reach.
#include "platform/device_events.h"
#include "platform/drive_identity.h"
#include "platform/volumes.h"

#include "tests/conformance/environment.h"
#include "tests/conformance/linux/event_loop.h"
#include "tests/conformance/linux/udisks_mock.h"

#include <gtest/gtest.h>

#include <QDeadlineTimer>

#include <sys/sysmacros.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace conformance;
using namespace platform;

namespace {

[[maybe_unused]] const auto* world = testing::AddGlobalTestEnvironment(new EventWorld);

constexpr std::intptr_t window = 42;
/// Longer than a blank disk is given, so that a second message would have come.
constexpr int quietTime = 2500; // milliseconds

std::vector<std::uintptr_t> received;
bool takeOffAtMessage = false;
WindowProcedure firstProcedure = nullptr;

std::intptr_t procedure(std::intptr_t to, std::uint32_t message, std::uintptr_t wParam,
                        std::intptr_t lParam) {
    if (to == window && message == deviceChangeMessage) received.push_back(wParam);
    if (takeOffAtMessage) setWindowProcedure(window, firstProcedure);
    return callWindowProcedure(firstProcedure, to, message, wParam, lParam) + 7;
}

std::string roots() {
    std::string buffer(200, '\0');
    buffer.resize(logicalDriveStrings(buffer));
    return buffer;
}

/// Letters of the drives that come and go; which they get depends on those of the tests before.
std::string letters() {
    std::string letters;
    for (const char c : roots())
        if (c >= 'A' && c <= 'Z' && c != 'C' && c != 'Z') letters += c;
    return letters;
}

std::size_t drivesThere() {
    return letters().size();
}

/// Number of a disk of this machine that the kernel has given a sequence number; 0 without one.
std::uint64_t anyDisk() {
    std::error_code error;
    for (const auto& disk : std::filesystem::directory_iterator("/sys/dev/block", error)) {
        std::uint64_t sectors = 0;
        std::ifstream(disk.path() / "size") >> sectors;
        if (sectors == 0 || !std::filesystem::exists(disk.path() / "diskseq", error)) continue;
        unsigned major = 0;
        unsigned minor = 0;
        char colon = 0;
        std::ifstream(disk.path() / "dev") >> major >> colon >> minor;
        return makedev(major, minor);
    }
    return 0;
}

class DeviceEvents : public testing::Test {
protected:
    DeviceEvents() {
        received.clear();
        takeOffAtMessage = false;
        mock.add(drivePath("stick"), stickDrive("STICK"));
        mock.add(drivePath("disk"), drive("DISK"));
        firstProcedure = setWindowProcedure(window, procedure);
    }

public:
    ~DeviceEvents() override {
        setWindowProcedure(window, firstProcedure);
        setDeviceEventDelivery({});
    }

protected:
    static bool waitForMessages(std::size_t count) {
        return waitFor([count] { return received.size() >= count; });
    }
    /// Handles events for a while in which nothing should happen.
    static void idle(int milliseconds = quietTime) {
        const QDeadlineTimer end(milliseconds);
        waitFor([&end] { return end.hasExpired(); });
    }

    UdisksMock mock;
};

using Messages = std::vector<std::uintptr_t>;

} // namespace

TEST_F(DeviceEvents, ProceduresChain) {
    ASSERT_NE(firstProcedure, nullptr);
    EXPECT_EQ(sendWindowMessage(window, deviceChangeMessage, 5, 0), 7);
    EXPECT_EQ(received, Messages{5});
    EXPECT_EQ(sendWindowMessage(window + 1, deviceChangeMessage, 6, 0), 0);
    EXPECT_EQ(setWindowProcedure(window, firstProcedure), procedure);
    EXPECT_EQ(setWindowProcedure(window, firstProcedure), firstProcedure);
    EXPECT_EQ(sendWindowMessage(window, deviceChangeMessage, 8, 0), 0);
    EXPECT_EQ(received, Messages{5});
}

TEST_F(DeviceEvents, StickComesAndGoes) {
    mock.add(blockPath("sdb1"), fileSystemBlock("sdb1", 17, "stick"));
    ASSERT_TRUE(waitForMessages(1));
    EXPECT_EQ(drivesThere(), 1);
    mock.remove(blockPath("sdb1"));
    ASSERT_TRUE(waitForMessages(2));
    EXPECT_EQ(drivesThere(), 0);
    EXPECT_EQ(received, (Messages{deviceArrival, deviceRemoveComplete}));
}

TEST_F(DeviceEvents, ArrivalAndItsScanAreOneRoundTrip) {
    std::vector<int> lists; // after each of two scans
    bool looking = false;   // the message is delivered inside of the look at the drives
    setDeviceEventDelivery([&](const std::function<void()>& message) {
        if (!std::exchange(looking, true)) return message();
        for (int scan = 0; scan < 2; ++scan) {
            EXPECT_EQ(drivesThere(), 1);
            lists.push_back(mock.takeLists());
        }
        message();
    });
    mock.takeLists();
    mock.add(blockPath("sdb1"), fileSystemBlock("sdb1", 17, "stick"));
    ASSERT_TRUE(waitForMessages(1));
    EXPECT_EQ(lists, (std::vector<int>{1, 1}))
        << "only the first is served by the list that told of the stick";
}

TEST_F(DeviceEvents, ArrivalAndWhatTheDriveIsAreOneRoundTrip) {
    const std::uint64_t disk = anyDisk();
    if (disk == 0) GTEST_SKIP() << "no disk here has a sequence number";
    std::vector<int> lists; // after the scan and after each of two identities
    bool looking = false;
    setDeviceEventDelivery([&](const std::function<void()>& message) {
        if (!std::exchange(looking, true)) return message();
        const std::string root = letters() + ":\\";
        lists.push_back(mock.takeLists());
        std::vector<DriveIdentity> identities;
        for (int look = 0; look < 2; ++look) {
            identities.push_back(driveIdentity(root));
            lists.push_back(mock.takeLists());
        }
        EXPECT_TRUE(identities[0]);
        EXPECT_EQ(identities[0], identities[1]);
        message();
    });
    mock.takeLists();
    mock.add(blockPath("sdb1"), fileSystemBlock("sdb1", disk, "stick"));
    ASSERT_TRUE(waitForMessages(1));
    EXPECT_EQ(lists, (std::vector<int>{1, 0, 1}))
        << "only the first is served by the list that told of the stick";
    EXPECT_TRUE(driveIdentity(letters() + ":\\"));
    EXPECT_EQ(mock.takeLists(), 2) << "a list and an identity, when nothing has just arrived";
}

TEST_F(DeviceEvents, WhatTheDriveIsIsAskedAnewLater) {
    const std::uint64_t disk = anyDisk();
    if (disk == 0) GTEST_SKIP() << "no disk here has a sequence number";
    bool looking = false;
    setDeviceEventDelivery([&](const std::function<void()>& message) {
        if (!std::exchange(looking, true)) return message();
        const std::string root = letters() + ":\\";
        std::this_thread::sleep_for(
            std::chrono::milliseconds(1100)); // as long as somebody may take to choose
        mock.takeLists();
        EXPECT_TRUE(driveIdentity(root));
        EXPECT_EQ(mock.takeLists(), 1);
        message();
    });
    mock.add(blockPath("sdb1"), fileSystemBlock("sdb1", disk, "stick"));
    ASSERT_TRUE(waitForMessages(1));
}

TEST_F(DeviceEvents, DiskWithTwoPartitionsArrivesOnce) {
    mock.add(blockPath("sdb"), withTable(blankBlock("sdb", 16, "stick")));
    mock.add(blockPath("sdb1"), onTable(fileSystemBlock("sdb1", 17, "stick"), "sdb"));
    mock.add(blockPath("sdb2"), onTable(fileSystemBlock("sdb2", 18, "stick", fat32("B", "B")), "sdb"));
    ASSERT_TRUE(waitForMessages(1));
    EXPECT_EQ(drivesThere(), 2);
    idle();
    EXPECT_EQ(received, Messages{deviceArrival});
}

TEST_F(DeviceEvents, ArrivalWaitsForTheFileSystem) {
    mock.add(blockPath("sdb"), blankBlock("sdb", 16, "stick"));
    idle(500);
    EXPECT_EQ(received, Messages());
    mock.addInterface(blockPath("sdb"), fileSystemInterface, mountedAt({}));
    mock.change(blockPath("sdb"), blockInterface, fat32("LATE"));
    ASSERT_TRUE(waitForMessages(1));
    idle();
    EXPECT_EQ(received, Messages{deviceArrival});
}

TEST_F(DeviceEvents, BlankDiskArrivesWhenItStaysBlank) {
    mock.add(blockPath("sdb"), blankBlock("sdb", 16, "disk"));
    ASSERT_TRUE(waitForMessages(1));
    EXPECT_EQ(drivesThere(), 1);
    idle();
    EXPECT_EQ(received, Messages{deviceArrival});
}

TEST_F(DeviceEvents, OnlyAMediumMatters) {
    mock.add(blockPath("sdb"), blankBlock("sdb", 16, "stick", {{"Size", quint64{0}}}));
    idle();
    EXPECT_EQ(received, Messages());
    EXPECT_EQ(drivesThere(), 1);
    mock.addInterface(blockPath("sdb"), fileSystemInterface, mountedAt({}));
    QVariantMap card = fat32("CARD");
    card.insert("Size", quint64{1'000'000});
    mock.change(blockPath("sdb"), blockInterface, card);
    ASSERT_TRUE(waitForMessages(1));
    mock.change(blockPath("sdb"), blockInterface, {{"Size", quint64{0}}, {"IdUsage", ""}});
    ASSERT_TRUE(waitForMessages(2));
    EXPECT_EQ(received, (Messages{deviceArrival, deviceRemoveComplete}));
}

TEST_F(DeviceEvents, MountingAndLabellingAreNoNews) {
    mock.add(blockPath("sdb1"), fileSystemBlock("sdb1", 17, "stick"));
    ASSERT_TRUE(waitForMessages(1));
    DiskFreeSpace space;
    const std::string root = letters() + ":\\";
    EXPECT_TRUE(diskFreeSpace(root, space));
    EXPECT_TRUE(setVolumeLabel(root, "OTHER"));
    EXPECT_TRUE(settleVolume(root));
    idle();
    EXPECT_EQ(received, Messages{deviceArrival});
}

TEST_F(DeviceEvents, ServiceThatVanishesAndComesBack) {
    mock.add(blockPath("sdb1"), fileSystemBlock("sdb1", 17, "stick"));
    ASSERT_TRUE(waitForMessages(1));
    mock.stop();
    ASSERT_TRUE(waitForMessages(2));
    EXPECT_EQ(drivesThere(), 0);
    mock.start();
    ASSERT_TRUE(waitForMessages(3));
    EXPECT_EQ(drivesThere(), 1);
    EXPECT_EQ(received, (Messages{deviceArrival, deviceRemoveComplete, deviceArrival}));
    mock.remove(blockPath("sdb1")); // the new one is listened to
    ASSERT_TRUE(waitForMessages(4));
}

TEST_F(DeviceEvents, QuickRestartOfTheServiceIsNoNews) {
    mock.add(blockPath("sdb1"), fileSystemBlock("sdb1", 17, "stick"));
    ASSERT_TRUE(waitForMessages(1));
    mock.stop();
    mock.start();
    idle();
    EXPECT_EQ(received, Messages{deviceArrival});
}

TEST_F(DeviceEvents, NothingComesWithoutAProcedure) {
    setWindowProcedure(window, firstProcedure);
    mock.add(blockPath("sdb1"), fileSystemBlock("sdb1", 17, "stick"));
    idle();
    EXPECT_EQ(received, Messages());
    EXPECT_EQ(mock.takeLists(), 1) << "the one for the watch that has ended";
}

TEST_F(DeviceEvents, ProcedureMayTakeItselfOff) {
    takeOffAtMessage = true;
    mock.add(blockPath("sdb1"), fileSystemBlock("sdb1", 17, "stick"));
    ASSERT_TRUE(waitForMessages(1));
    mock.remove(blockPath("sdb1"));
    idle();
    EXPECT_EQ(received, Messages{deviceArrival});
}

TEST_F(DeviceEvents, DeliveryStandsBetween) {
    int delivered = 0;
    setDeviceEventDelivery([&delivered](const std::function<void()>& message) {
        ++delivered;
        EXPECT_TRUE(received.empty());
        message();
    });
    mock.add(blockPath("sdb1"), fileSystemBlock("sdb1", 17, "stick"));
    ASSERT_TRUE(waitForMessages(1));
    EXPECT_EQ(delivered, 2) << "the look at the drives, and in it the message";
}

TEST_F(DeviceEvents, ALookAtTheDrivesMayWait) {
    std::function<void()> look;
    setDeviceEventDelivery([&look](const std::function<void()>& message) { look = message; });
    mock.add(blockPath("sdb1"), fileSystemBlock("sdb1", 17, "stick"));
    ASSERT_TRUE(waitFor([&look] { return static_cast<bool>(look); }));
    EXPECT_EQ(received, Messages());
    setDeviceEventDelivery([](const std::function<void()>& message) { message(); });
    look();
    EXPECT_EQ(received, Messages{deviceArrival});
}

TEST_F(DeviceEvents, SectionsOfTheFileComeAndGo) {
    mock.add(blockPath("sdb1"), fileSystemBlock("sdb1", 17, "stick"));
    ASSERT_TRUE(waitForMessages(1));
    std::optional<Drives> drives(std::in_place); // the file takes the place of UDisks2
    ASSERT_TRUE(waitForMessages(3));
    mock.takeLists();
    drives->add('E', DriveRemovable);
    ASSERT_TRUE(waitForMessages(4));
    EXPECT_EQ(letters(), "E");
    drives->remove('E');
    ASSERT_TRUE(waitForMessages(5));
    EXPECT_EQ(mock.takeLists(), 0) << "UDisks2 is not asked";
    drives.reset();
    ASSERT_TRUE(waitForMessages(7));
    EXPECT_EQ(drivesThere(), 1);
    EXPECT_EQ(received, (Messages{deviceArrival, deviceRemoveComplete, deviceArrival, deviceArrival,
                                  deviceRemoveComplete, deviceRemoveComplete, deviceArrival}));
}

TEST_F(DeviceEvents, FileWrittenInPlace) {
    const Drives drives;
    ASSERT_TRUE(waitForMessages(1));
    const std::filesystem::path table =
        std::filesystem::read_symlink("/proc/self/exe").parent_path() / "Drives.ini";
    std::ofstream(table, std::ios::app) << "[F:]\nType=2\nPath=/nowhere\n";
    ASSERT_TRUE(waitForMessages(2));
    std::ofstream(table, std::ios::app) << "Label=NEW\n";
    idle(500);
    EXPECT_EQ(received, (Messages{deviceArrival, deviceArrival}));
}
