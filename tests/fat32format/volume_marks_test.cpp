#include "tools/fat32format/volume_marks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string_view>
#include <vector>

using namespace fat32format;

namespace {

std::vector<unsigned char> sectorWith(std::size_t place, std::string_view text) {
    std::vector<unsigned char> sector(512);
    std::copy(text.begin(), text.end(), sector.begin() + static_cast<std::ptrdiff_t>(place));
    return sector;
}

constexpr std::string_view toGo("\x3B\xD6\x67\x49\x29\x2E\xD8\x4A\x83\x99\xF6\xA3\x39\xE3\xD0\x01", 16);

} // namespace

TEST(VolumeMarks, BitLocker) {
    EXPECT_TRUE(isBitLocker(sectorWith(3, "-FVE-FS-")));
    EXPECT_TRUE(isBitLocker(sectorWith(424, toGo)));
}

TEST(VolumeMarks, OnlyTheWholeMarkAtItsPlaceIsBitLocker) {
    EXPECT_FALSE(isBitLocker(sectorWith(0, "")));
    EXPECT_FALSE(isBitLocker(sectorWith(4, "-FVE-FS-")));
    EXPECT_FALSE(isBitLocker(sectorWith(3, "-FVE-FS+")));
    EXPECT_FALSE(isBitLocker(sectorWith(425, toGo)));
    EXPECT_FALSE(isBitLocker(sectorWith(424, toGo.substr(0, 15))));
    EXPECT_FALSE(isBitLocker({}));
    const auto sector = sectorWith(424, toGo);
    EXPECT_FALSE(isBitLocker(std::span(sector).first(439)));
}

TEST(VolumeMarks, FileSystemsOfWindows) {
    EXPECT_EQ(fileSystemName(sectorWith(3, "NTFS    ")), "NTFS");
    EXPECT_EQ(fileSystemName(sectorWith(3, "EXFAT   ")), "exFAT");
    EXPECT_EQ(fileSystemName(sectorWith(3, "ReFS")), "ReFS");
    EXPECT_EQ(fileSystemName(sectorWith(82, "FAT32   ")), "FAT");
    EXPECT_EQ(fileSystemName(sectorWith(54, "FAT16   ")), "FAT");
    EXPECT_EQ(fileSystemName(sectorWith(0, "LUKS")), "");
    EXPECT_EQ(fileSystemName({}), "");
}
