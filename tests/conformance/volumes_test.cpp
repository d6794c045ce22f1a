// The drives of the computer, as the documentation of the Windows functions promises them.
#include "platform/volumes.h"

#include "tests/conformance/environment.h"
#include "tests/conformance/known_difference.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

using conformance::Drives;
using namespace platform;

namespace {

using namespace std::string_literals;

constexpr char untouched = '#';

std::uint64_t number(const DiskFreeSpace::Bytes& bytes) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        value += std::uint64_t{bytes[i]} << (8 * i);
    return value;
}

/// What the call leaves in a buffer of that size, and its result.
struct Answer {
    std::string buffer;
    std::uint32_t result = 0;
};

Answer driveStrings(std::size_t size) {
    Answer answer{std::string(size, untouched), 0};
    answer.result = logicalDriveStrings(answer.buffer);
    return answer;
}

} // namespace

TEST(Volumes, ADiskIsDescribedByItsSizeAndLabel) {
    Drives drives;
    drives.add('E', DriveFixed);
    logicalDriveStrings({});
    ASSERT_TRUE(setVolumeLabel(R"(E:\)", "BACKUP"));
    drives.readAgain('E');
    DiskFreeSpace space;
    ASSERT_TRUE(diskFreeSpace(R"(E:\)", space));
    const DiskDescription disk = diskDescription("E:\\\0"s);
    EXPECT_EQ(disk.size, number(space.total));
    EXPECT_EQ(disk.label, "BACKUP");
    EXPECT_EQ(diskDescription(R"(X:\)").size, 0U);
    EXPECT_EQ(diskDescription("").size, 0U);
}

TEST(Volumes, RootsInTheOrderOfTheirLetters) {
    Drives drives;
    drives.add('G', DriveRemovable);
    drives.add('E', DriveFixed);
    const Answer answer = driveStrings(64);
    EXPECT_EQ(answer.result, 16U);
    EXPECT_EQ(answer.buffer.substr(0, 18), "C:\\\0E:\\\0G:\\\0Z:\\\0\0#"s);
}

TEST(Volumes, BufferThatJustHoldsTheRoots) {
    Drives drives;
    drives.add('E', DriveRemovable);
    const Answer fits = driveStrings(13);
    EXPECT_EQ(fits.result, 12U);
    EXPECT_EQ(fits.buffer, "C:\\\0E:\\\0Z:\\\0\0"s);
    const Answer tooSmall = driveStrings(12);
    EXPECT_EQ(tooSmall.result, 13U);
    EXPECT_EQ(tooSmall.buffer, std::string(12, untouched));
    EXPECT_EQ(driveStrings(0).result, 13U);
}

TEST(Volumes, SixteenRootsDoNotFitInto64Characters) {
    Drives drives;
    for (char letter = 'D'; letter <= 'P'; ++letter)
        drives.add(letter, DriveRemovable);
    EXPECT_EQ(driveStrings(64).result, 60U);
    drives.add('Q', DriveRemovable);
    const Answer answer = driveStrings(64);
    EXPECT_EQ(answer.result, 65U);
    EXPECT_EQ(answer.buffer, std::string(64, untouched));
}

TEST(Volumes, DrivesComeAndGoWithTheNextCall) {
    Drives drives;
    EXPECT_EQ(driveStrings(64).result, 8U);
    drives.add('E', DriveRemovable);
    EXPECT_EQ(driveStrings(64).result, 12U);
    EXPECT_EQ(driveType("E:\\"), DriveRemovable);
    drives.remove('E');
    EXPECT_EQ(driveStrings(64).result, 8U);
    EXPECT_EQ(driveType("E:\\"), DriveNoRootDir);
}

TEST(Volumes, Types) {
    Drives drives;
    drives.add('E', DriveRemovable);
    drives.add('F', DriveFixed);
    drives.add('G', DriveRemote);
    drives.add('H', DriveCdRom);
    EXPECT_EQ(driveType("C:\\"), DriveFixed);
    EXPECT_EQ(driveType("E:\\"), DriveRemovable);
    EXPECT_EQ(driveType("F:\\"), DriveFixed);
    EXPECT_EQ(driveType("G:\\"), DriveRemote);
    EXPECT_EQ(driveType("H:\\"), DriveCdRom);
}

TEST(Volumes, RootsAreReadRegardlessOfCaseAndUntilTheFirstNul) {
    Drives drives;
    drives.add('E', DriveRemovable);
    EXPECT_EQ(driveType("e:\\"), DriveRemovable);
    EXPECT_EQ(driveType("E:\\\0"s), DriveRemovable);
    EXPECT_EQ(driveType("E:\\\0F:\\"s), DriveRemovable);
}

TEST(Volumes, WhatIsNoDriveHasNoRoot) {
    const Drives drives;
    DiskFreeSpace space;
    space.total.fill(7);
    EXPECT_FALSE(diskFreeSpace("K:\\", space));
    EXPECT_EQ(space.total[3], 7);
    EXPECT_EQ(driveType("K:\\"), DriveNoRootDir);
    EXPECT_EQ(driveType("1:\\"), DriveNoRootDir);
    EXPECT_EQ(driveType("K:\\folder"), DriveNoRootDir);
    EXPECT_FALSE(setVolumeLabel("K:\\", "X"));
    EXPECT_FALSE(settleVolume("K:\\"));
}

TEST(Volumes, SizesAreThoseOfTheFolder) {
    Drives drives;
    const auto folder = drives.add('E', DriveRemovable);
    const std::filesystem::space_info expected = std::filesystem::space(folder);
    DiskFreeSpace space;
    ASSERT_TRUE(diskFreeSpace("E:\\", space));
    EXPECT_EQ(number(space.total), expected.capacity);
    EXPECT_GE(number(space.totalFree), number(space.freeToCaller));
    EXPECT_LE(number(space.totalFree), number(space.total));
}

TEST(Volumes, WithoutAMediumTheResultsStayAsTheyWere) {
    Drives drives;
    drives.add('E', DriveRemovable);
    drives.removeMedium('E');
    EXPECT_EQ(driveType("E:\\"), DriveRemovable);
    DiskFreeSpace space;
    space.total.fill(7);
    EXPECT_FALSE(diskFreeSpace("E:\\", space));
    EXPECT_EQ(space.total[0], 7);
    std::array<char, 20> label{"label"};
    std::array<char, 20> fileSystem{"file system"};
    if (!conformance::knownDifference(
            conformance::Differs::Wine, "a drive without a medium has an empty label and \"NTFS\"",
            "https://learn.microsoft.com/windows/win32/api/fileapi/nf-fileapi-getvolumeinformationa")) {
        EXPECT_FALSE(volumeInformation("E:\\", label, fileSystem));
        EXPECT_STREQ(label.data(), "label");
        EXPECT_STREQ(fileSystem.data(), "file system");
    }
    EXPECT_FALSE(setVolumeLabel("E:\\", "X"));
    EXPECT_FALSE(settleVolume("E:\\"));
}

TEST(Volumes, LabelComesBackAsItWasSet) {
    Drives drives;
    drives.add('E', DriveRemovable);
    for (const std::string_view label : {"ORVANTA", "Grün ß € ÄÖ", ""}) {
        ASSERT_TRUE(setVolumeLabel("E:\\", label));
        drives.readAgain('E');
        std::array<char, 64> stored{};
        std::array<char, 64> fileSystem{};
        ASSERT_TRUE(volumeInformation("E:\\", stored, fileSystem));
        EXPECT_EQ(std::string_view(stored.data()), label);
        EXPECT_NE(std::string_view(fileSystem.data()), "");
    }
}

TEST(Volumes, LabelAndFileSystemAreCutToTheirBuffersBetweenCharacters) {
    Drives drives;
    drives.add('E', DriveRemovable);
    ASSERT_TRUE(setVolumeLabel("E:\\", "aä€z"));
    drives.readAgain('E');
    std::array<char, 5> label{};
    std::array<char, 3> fileSystem{};
    ASSERT_TRUE(volumeInformation("E:\\", label, fileSystem));
    EXPECT_STREQ(label.data(), "aä") << "the next character does not fit";
    EXPECT_EQ(std::string_view(fileSystem.data()).size(), 2U);
    EXPECT_TRUE(volumeInformation("E:\\", {}, {}));
}

TEST(Volumes, LabelCanBeSetAndDriveSettled) {
    Drives drives;
    drives.add('E', DriveRemovable);
    EXPECT_TRUE(setVolumeLabel("E:\\", "ORVANTA"));
    EXPECT_TRUE(setVolumeLabel("E:\\", ""));
    EXPECT_TRUE(settleVolume("E:\\"));
}

TEST(Volumes, AnotherDriveUnderTheSameLetterIsNotLabelled) {
    Drives drives;
    drives.add('E', DriveRemovable);
    const DriveIdentity drive = driveIdentity("E:\\");
    ASSERT_TRUE(drive);
    EXPECT_TRUE(setVolumeLabel("E:\\", "MINE", drive));
    drives.exchangeMedium('E');
    std::array<char, 64> before{};
    ASSERT_TRUE(volumeInformation("E:\\", before, {}));
    EXPECT_FALSE(setVolumeLabel("E:\\", "HIS", drive));
    std::array<char, 64> after{};
    ASSERT_TRUE(volumeInformation("E:\\", after, {}));
    EXPECT_EQ(before, after);
}
