#include "format/drive_snapshot.h"

#include "fake.h"

#include <gtest/gtest.h>

using fake::computer;
using Drives = std::vector<std::string>;

namespace {

class DriveSnapshot : public testing::Test {
protected:
    DriveSnapshot() {
        fake::reset();
        add("C:\\", platform::DriveFixed);
        add("Z:\\", platform::DriveRemote);
    }

    static void add(const std::string& root, std::uint32_t type) { computer().drives[root].type = type; }

    Module1::DriveSnapshot snapshot;
};

} // namespace

TEST_F(DriveSnapshot, NotesFixedDrivesOnly) {
    add("A:\\", platform::DriveRemovable);
    add("D:\\", platform::DriveFixed);
    add("E:\\", platform::DriveRemovable);
    add("F:\\", platform::DriveCdRom);
    snapshot.take();
    EXPECT_EQ(snapshot.drives(), (Drives{"C:", "D:"}));
    EXPECT_EQ(snapshot.count(), 2);
}

TEST_F(DriveSnapshot, NotesLettersInUpperCase) {
    add("d:\\", platform::DriveFixed);
    snapshot.take();
    EXPECT_EQ(snapshot.drives(), (Drives{"C:", "D:"}));
}

TEST_F(DriveSnapshot, IsTakenAnewEachTime) {
    add("D:\\", platform::DriveFixed);
    snapshot.take();
    computer().drives.erase("D:\\");
    snapshot.take();
    EXPECT_EQ(snapshot.drives(), Drives{"C:"});
}

TEST_F(DriveSnapshot, NothingIsNewAtFirst) {
    snapshot.take();
    EXPECT_EQ(snapshot.newDrive(), "");
}

TEST_F(DriveSnapshot, FindsTheNewFixedDrive) {
    snapshot.take();
    add("E:\\", platform::DriveFixed);
    EXPECT_EQ(snapshot.newDrive(), "E:");
}

TEST_F(DriveSnapshot, NewDriveIsInUpperCase) {
    snapshot.take();
    add("e:\\", platform::DriveFixed);
    EXPECT_EQ(snapshot.newDrive(), "E:");
}

TEST_F(DriveSnapshot, NewStickIsNone) {
    snapshot.take();
    add("E:\\", platform::DriveRemovable);
    add("F:\\", platform::DriveCdRom);
    EXPECT_EQ(snapshot.newDrive(), "");
}

TEST_F(DriveSnapshot, LastOfSeveralNewDrivesWins) {
    snapshot.take();
    add("E:\\", platform::DriveFixed);
    add("F:\\", platform::DriveFixed);
    EXPECT_EQ(snapshot.newDrive(), "F:");
}

TEST_F(DriveSnapshot, DiskInFrontOfAnOldOneMakesTheLastOneTheResult) {
    add("F:\\", platform::DriveFixed);
    snapshot.take();
    add("E:\\", platform::DriveFixed);
    EXPECT_EQ(snapshot.newDrive(), "F:");
}

TEST_F(DriveSnapshot, DiskThatReplacesAnotherIsNotSeen) {
    add("D:\\", platform::DriveFixed);
    snapshot.take();
    computer().drives.erase("D:\\");
    add("E:\\", platform::DriveFixed);
    EXPECT_EQ(snapshot.newDrive(), "");
}

TEST_F(DriveSnapshot, FifteenDrivesFitAndTheSixteenthHidesAll) {
    for (char letter = 'D'; letter <= 'P'; ++letter)
        add(std::string(1, letter) + ":\\", platform::DriveFixed);
    ASSERT_EQ(computer().drives.size(), 15U);
    snapshot.take();
    EXPECT_EQ(snapshot.count(), 14);
    add("Q:\\", platform::DriveFixed);
    EXPECT_EQ(snapshot.newDrive(), "");
    snapshot.take();
    EXPECT_EQ(snapshot.count(), 0);
}

TEST_F(DriveSnapshot, NoDrivesAtAll) {
    computer().drives.clear();
    snapshot.take();
    EXPECT_EQ(snapshot.count(), 0);
    EXPECT_EQ(snapshot.newDrive(), "");
}
