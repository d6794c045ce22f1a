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
    return {512, 976'771'120, 64, 2048, 0x12345678};
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
            for (std::uint64_t sectors = 33; sectors < (1ULL << 33U); sectors = sectors * 5 / 4 + 7) {
                const auto layout = fat32Layout({sectorSize, sectors, perCluster, 0, 0});
                if (!layout) continue;
                ++made;
                expectSound(*layout);
            }
        }
    }
    EXPECT_GT(made, 1000);
}

TEST(Fat32, VolumeTooSmallOrTooLarge) {
    EXPECT_FALSE(fat32Layout({512, 0, 1, 0, 0}).has_value());
    EXPECT_FALSE(fat32Layout({512, 34, 1, 0, 0}).has_value());
    EXPECT_TRUE(fat32Layout({512, 35, 1, 0, 0}).has_value());
    EXPECT_FALSE(fat32Layout({512, 100, 128, 0, 0}).has_value());
    EXPECT_FALSE(fat32Layout({512, 300'000'000, 1, 0, 0}).has_value()) << "more than 2^28 clusters";
    EXPECT_EQ(fat32Layout({512, 1ULL << 40U, 64, 0, 0})->sectors, 0xFFFFFFFFU);
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
