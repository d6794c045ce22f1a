#include "tools/fat32format/fat32.h"

#include <gtest/gtest.h>

#include <array>

using namespace fat32format;

namespace {

std::uint32_t number(const Bytes& bytes, std::size_t place, int length) {
    std::uint32_t value = 0;
    for (int i = length - 1; i >= 0; --i)
        value = (value << 8U) | bytes.at(place + static_cast<std::size_t>(i));
    return value;
}

Fat32Wish diskOf500Gigabytes() {
    Fat32Wish wish;
    wish.sectors = 976'771'120;
    wish.sectorsPerCluster = 64;
    wish.sectorsBefore = 2048;
    wish.serial = 0x12345678;
    return wish;
}

std::optional<Fat32Layout> layoutOf(std::uint32_t sectorSize, std::uint64_t sectors,
                                    std::uint32_t sectorsPerCluster) {
    Fat32Wish wish;
    wish.sectorSize = sectorSize;
    wish.sectors = sectors;
    wish.sectorsPerCluster = sectorsPerCluster;
    return fat32Layout(wish);
}

/// The clusters fit into the volume and into the tables, and no sector of a table is there in vain.
void expectSound(const Fat32Layout& layout) {
    const Fat32Wish& wish = layout.wish;
    const std::uint64_t inTable = std::uint64_t{layout.table} * wish.sectorSize / 4;
    const std::uint64_t end = layout.firstData() + std::uint64_t{layout.clusters} * wish.sectorsPerCluster;
    EXPECT_GE(layout.reserved, 32U);
    EXPECT_EQ(layout.firstData() % wish.sectorsPerCluster, 0U);
    EXPECT_LE(end, layout.sectors);
    EXPECT_LT(layout.sectors - end, wish.sectorsPerCluster);
    EXPECT_GE(inTable, layout.clusters + 2ULL);
    EXPECT_LE(inTable, layout.clusters + 2ULL + 2ULL * wish.sectorSize / 4);
}

} // namespace

TEST(Fat32, LayoutIsSoundWhateverTheSize) {
    int made = 0;
    for (const std::uint32_t sectorSize : {512U, 4096U}) {
        for (std::uint32_t perCluster = 1; perCluster <= 128; perCluster *= 2) {
            for (std::uint64_t sectors = 33; sectors < (1ULL << 33U); sectors = sectors * 11 / 10 + 7) {
                const auto layout = layoutOf(sectorSize, sectors, perCluster);
                if (!layout) continue;
                ++made;
                expectSound(*layout);
            }
        }
    }
    EXPECT_GT(made, 1000);
}

TEST(Fat32, VolumeTooSmallOrTooLarge) {
    EXPECT_FALSE(layoutOf(512, 0, 1).has_value());
    EXPECT_FALSE(layoutOf(512, 35, 1).has_value());
    EXPECT_FALSE(layoutOf(512, 65'000ULL * 128, 128).has_value());
    EXPECT_FALSE(layoutOf(512, 300'000'000, 1).has_value()) << "more than 2^28 clusters";
    EXPECT_EQ(layoutOf(512, 1ULL << 40U, 64)->sectors, 0xFFFFFFFFU);
}

/// With one sector more there is one cluster more, unless the tables take it.
TEST(Fat32, FewestAndMostClusters) {
    for (const std::uint32_t sectorSize : {512U, 1024U, 2048U, 4096U}) {
        std::uint64_t sectors = fewestClusters;
        while (!layoutOf(sectorSize, sectors, 1))
            ++sectors;
        EXPECT_EQ(layoutOf(sectorSize, sectors, 1)->clusters, 65'525U) << sectorSize;
        EXPECT_EQ(layoutOf(sectorSize, sectors + 1, 1)->clusters, 65'526U) << sectorSize;
        sectors = mostClusters + 32 + 2 * ((mostClusters + 2) * 4 / sectorSize);
        while (layoutOf(sectorSize, sectors, 1))
            ++sectors;
        EXPECT_EQ(layoutOf(sectorSize, sectors - 1, 1)->clusters, 0x0FFF'FFF4U) << sectorSize;
    }
}

TEST(Fat32, SectorsThatFatDoesNotKnow) {
    for (const std::uint32_t sectorSize : {0U, 256U, 520U, 4160U, 8192U})
        EXPECT_FALSE(layoutOf(sectorSize, 1'000'000, 1).has_value()) << sectorSize;
    for (const std::uint32_t sectorSize : {512U, 1024U, 2048U, 4096U})
        EXPECT_TRUE(layoutOf(sectorSize, 1'000'000, 1).has_value()) << sectorSize;
}

TEST(Fat32, LabelAsFatKeepsIt) {
    EXPECT_EQ(fatLabel("Backup 1"), "BACKUP 1");
    EXPECT_EQ(fatLabel("  blanks "), "BLANKS");
    EXPECT_EQ(fatLabel("ELEVEN-CHAR"), "ELEVEN-CHAR");
    EXPECT_EQ(fatLabel("$%'-_@~`!(){}").size(), 0U) << "13 characters";
    EXPECT_EQ(fatLabel("$%'-_@~`!()"), "$%'-_@~`!()");
    for (const char* other : {"", "   ", "TWELVE-CHARS", "\xC3\x84PFEL", "A\tB", "A\x7F", "No Name"})
        EXPECT_EQ(fatLabel(other), "") << other;
    for (const char c : std::string("\"*+,./:;<=>?[\\]|"))
        EXPECT_EQ(fatLabel(std::string("A") + c), "") << c;
}

TEST(Fat32, LabelStandsInTheBootSectorAndInTheRootFolder) {
    Fat32Wish wish = diskOf500Gigabytes();
    wish.label = "BACKUP";
    wish.labelled.tm_year = 126;
    wish.labelled.tm_mon = 11;
    wish.labelled.tm_mday = 31;
    wish.labelled.tm_hour = 12;
    wish.labelled.tm_min = 34;
    wish.labelled.tm_sec = 59;
    const auto layout = fat32Layout(wish);
    const Bytes boot = bootSector(*layout);
    EXPECT_EQ(std::string(boot.begin() + 71, boot.begin() + 90), "BACKUP     FAT32   ");
    const Bytes root = firstRootSector(*layout);
    EXPECT_EQ(std::string(root.begin(), root.begin() + 12), "BACKUP     \b");
    EXPECT_EQ(number(root, 12, 4) + number(root, 16, 4) + number(root, 20, 2) + number(root, 26, 2), 0U)
        << "a label has neither clusters nor other times";
    EXPECT_EQ(number(root, 22, 2), (12U << 11U) + (34U << 5U) + 29U);
    EXPECT_EQ(number(root, 24, 2), (46U << 9U) + (12U << 5U) + 31U);
    EXPECT_EQ(number(root, 28, 4) + number(root, 32, 4), 0U) << "nothing behind it";
}

TEST(Fat32, NoLabel) {
    const auto layout = fat32Layout(diskOf500Gigabytes());
    EXPECT_EQ(firstRootSector(*layout), Bytes(512));
}

TEST(Fat32, DatesThatFatCannotKeep) {
    Fat32Wish wish = diskOf500Gigabytes();
    wish.label = "BACKUP";
    EXPECT_EQ(number(firstRootSector(*fat32Layout(wish)), 22, 4), 0x0021'0000U) << "the first day of 1980";
    wish.labelled.tm_year = 300;
    wish.labelled.tm_mday = 1;
    wish.labelled.tm_sec = 60;
    EXPECT_EQ(number(firstRootSector(*fat32Layout(wish)), 22, 4), 0xFE21'001DU) << "2107; a leap second";
}

TEST(Fat32, BootSector) {
    const auto layout = fat32Layout(diskOf500Gigabytes());
    const Bytes boot = bootSector(*layout);
    ASSERT_EQ(boot.size(), 512U);
    EXPECT_EQ(number(boot, 11, 2), 512U);
    EXPECT_EQ(number(boot, 13, 1), 64U);
    EXPECT_EQ(number(boot, 14, 2), layout->reserved);
    EXPECT_EQ(number(boot, 16, 1), 2U);
    EXPECT_EQ(number(boot, 17, 4), 0U) << "what only smaller kinds have";
    EXPECT_EQ(number(boot, 22, 2), 0U);
    EXPECT_EQ(number(boot, 28, 4), 2048U);
    EXPECT_EQ(number(boot, 32, 4), 976'771'120U);
    EXPECT_EQ(number(boot, 36, 4), layout->table);
    EXPECT_EQ(number(boot, 44, 4), 2U);
    EXPECT_EQ(number(boot, 48, 2), 1U);
    EXPECT_EQ(number(boot, 50, 2), 6U);
    EXPECT_EQ(number(boot, 67, 4), 0x12345678U);
    EXPECT_EQ(std::string(boot.begin() + 71, boot.begin() + 90), "NO NAME    FAT32   ");
    EXPECT_EQ(number(boot, 510, 2), 0xAA55U);
}

TEST(Fat32, FreeClustersAndFirstEntries) {
    const auto layout = fat32Layout(diskOf500Gigabytes());
    const Bytes information = informationSector(*layout);
    EXPECT_EQ(number(information, 0, 4), 0x41615252U);
    EXPECT_EQ(number(information, 484, 4), 0x61417272U);
    EXPECT_EQ(number(information, 488, 4), layout->clusters - 1);
    EXPECT_EQ(number(information, 508, 4), 0xAA550000U);
    const Bytes table = firstTableSector(*layout);
    EXPECT_EQ(number(table, 0, 4), 0x0FFFFFF8U);
    EXPECT_EQ(number(table, 8, 4), 0x0FFFFFFFU);
    EXPECT_EQ(number(table, 12, 4), 0U);
}

TEST(PartitionTable, OnePartition) {
    const Bytes table = partitionTable(512, 2048, 976'771'120, 0x12345678);
    ASSERT_EQ(table.size(), 512U);
    EXPECT_EQ(number(table, 440, 4), 0x12345678U);
    EXPECT_EQ(number(table, 446, 1), 0U);
    EXPECT_EQ(Bytes(table.begin() + 447, table.begin() + 450), (Bytes{0x20, 0x21, 0x00}))
        << "2048 as 0/32/33";
    EXPECT_EQ(number(table, 450, 1), 0x0CU);
    EXPECT_EQ(Bytes(table.begin() + 451, table.begin() + 454), (Bytes{0xFE, 0xFF, 0xFF})) << "beyond 1023";
    EXPECT_EQ(number(table, 454, 4), 2048U);
    EXPECT_EQ(number(table, 458, 4), 976'771'120U);
    EXPECT_EQ(number(table, 510, 2), 0xAA55U);
    EXPECT_EQ(partitionTable(4096, 256, 1000, 0).size(), 4096U);
}

TEST(PartitionTable, EndBeyondWhatTheTableCounts) {
    const Bytes table = partitionTable(512, 0xFFFFFFFF, 0xFFFFFFFF, 0);
    EXPECT_EQ(Bytes(table.begin() + 451, table.begin() + 454), (Bytes{0xFE, 0xFF, 0xFF}));
    const Bytes wrapped = partitionTable(512, 2048, 0xFFFFFFFF, 0);
    EXPECT_EQ(Bytes(wrapped.begin() + 451, wrapped.begin() + 454), (Bytes{0xFE, 0xFF, 0xFF}));
}
