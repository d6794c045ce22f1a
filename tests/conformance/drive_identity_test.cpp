// What a drive is, whatever letter it has.
#include "platform/drive_identity.h"

#include "tests/conformance/environment.h"

#include <gtest/gtest.h>

#include <string>

using conformance::Drives;
using namespace platform;
using namespace std::string_literals;

TEST(DriveIdentity, StaysAsLongAsTheDriveDoes) {
    Drives drives;
    drives.add('E', DriveRemovable);
    const DriveIdentity before = driveIdentity("E:\\");
    EXPECT_TRUE(before);
    EXPECT_TRUE(setVolumeLabel("E:\\", "ANOTHER"));
    drives.add('F', DriveRemovable);
    EXPECT_EQ(driveIdentity("E:\\"), before);
}

TEST(DriveIdentity, IsReadLikeEveryRoot) {
    Drives drives;
    drives.add('E', DriveRemovable);
    const DriveIdentity known = driveIdentity("E:\\");
    for (const std::string& root : {"e:\\"s, "E:"s, "E:\\\0F:\\"s})
        EXPECT_EQ(driveIdentity(root), known) << root;
    for (const std::string& root : {""s, "E"s, "E:\\folder"s, "1:\\"s, "\\\\.\\E:"s})
        EXPECT_FALSE(driveIdentity(root)) << root;
}

TEST(DriveIdentity, DiffersFromDriveToDrive) {
    Drives drives;
    drives.add('E', DriveRemovable);
    drives.add('F', DriveRemovable);
    EXPECT_NE(driveIdentity("E:\\"), driveIdentity("F:\\"));
    EXPECT_NE(driveIdentity("E:\\"), driveIdentity("C:\\"));
    EXPECT_TRUE(driveIdentity("C:\\"));
}

TEST(DriveIdentity, AnotherMediumInTheSameDriveIsAnotherOne) {
    Drives drives;
    drives.add('E', DriveRemovable);
    const DriveIdentity before = driveIdentity("E:\\");
    drives.exchangeMedium('E');
    const DriveIdentity after = driveIdentity("E:\\");
    EXPECT_TRUE(after);
    EXPECT_NE(after, before);
}

TEST(DriveIdentity, WithoutAMediumThereIsNone) {
    Drives drives;
    drives.add('E', DriveRemovable);
    drives.removeMedium('E');
    EXPECT_FALSE(driveIdentity("E:\\"));
    EXPECT_FALSE(driveIdentity("K:\\"));
}
