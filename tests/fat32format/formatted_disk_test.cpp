// Clusters, partition and table that a disk gets, and disks that are of no size for it.
#include "tests/fat32format/formatter_fixture.h"

#include <algorithm>

using namespace fat32format;

namespace {

Bytes littleEndian(std::uint32_t number) {
    Bytes bytes;
    for (unsigned shift = 0; shift < 32; shift += 8)
        bytes.push_back(static_cast<unsigned char>(number >> shift & 0xFFU));
    return bytes;
}

} // namespace

TEST_F(Fat32Format, ClusterSizeIsInSectorsOf512BytesWhateverTheDiskHas) {
    partition().sectorSize = 4096;
    EXPECT_EQ(run(), Status::Done);
    EXPECT_EQ(expectFileSystem(1'048'576, 4096)[13], 8);
    EXPECT_TRUE(said("32768 bytes a cluster"));
    options.sectorsPerCluster = 1;
    EXPECT_EQ(run(), Status::Done);
    EXPECT_EQ(expectFileSystem(1'048'576, 4096)[13], 1);
    EXPECT_TRUE(said("4096 bytes a cluster"));
}

// The partition's type.

TEST_F(Fat32Format, TypeIsSetOnceWhenTheVolumeIsWhole) {
    EXPECT_EQ(run(), Status::Done);
    EXPECT_EQ(system.disk.typeSet, 1);
    EXPECT_EQ(system.disk.whenTypeSet, system.disk.read(1'048'576, 512));
    EXPECT_EQ(system.disk.whenTypeSet[510], 0x55);
}

TEST_F(Fat32Format, WholeDiskHasNoTypeToSet) {
    useBlankDisk();
    EXPECT_EQ(run(), Status::Done);
    EXPECT_EQ(system.disk.typeSet, 0);
}

TEST_F(Fat32Format, TypeThatCannotBeSet) {
    EXPECT_EQ(run(), Status::Done);
    system.failingCall = system.calls;
    system.calls = 0;
    system.output.clear();
    EXPECT_EQ(run(), Status::Failed);
    EXPECT_TRUE(said("does not take the type of the new partition")) << system.output;
    EXPECT_FALSE(said("Done"));
    EXPECT_FALSE(system.disk.sectors.contains(1'048'576)) << "nothing passes for a file system";
}

// Disks without a partition table.

TEST_F(Fat32Format, BlankDiskGetsATableWithOnePartition) {
    useBlankDisk();
    EXPECT_EQ(run(), Status::Done);
    const Bytes boot = expectFileSystem(1'048'576);
    EXPECT_EQ(boot[28] + (boot[29] << 8), 2048) << "sectors in front of it";
    EXPECT_EQ(system.disk.read(0, 512), partitionTable(512, 2048, 976'771'120, 0x12345678));
    EXPECT_EQ(system.disk.sectors.size(), 7U);
    EXPECT_TRUE(system.disk.tableRead);
    EXPECT_TRUE(said("Drive E: is the whole of /dev/sdb, 500.1 GB"));
    EXPECT_TRUE(said("The disk gets a partition table with one partition.\n"));
}

TEST_F(Fat32Format, PartitionIsNoLargerThanTheTableCanTell) {
    Volume& disk = useBlankDisk();
    for (const std::uint64_t sectors : {0xFFFF'FFFEULL, 0xFFFF'FFFFULL, 0x1'0000'0000ULL, 0x2'0000'0000ULL}) {
        disk.bytes = disk.diskBytes = sectors * 512;
        tellTheTable();
        EXPECT_EQ(run(), Status::Done);
        const auto end = static_cast<std::uint32_t>(std::min<std::uint64_t>(sectors, 0xFFFF'FFFFU));
        EXPECT_EQ(system.disk.read(0, 512), partitionTable(512, 2048, end - 2048, 0x12345678)) << sectors;
        const Bytes boot = system.disk.read(1'048'576, 512);
        EXPECT_EQ(Bytes(boot.begin() + 32, boot.begin() + 36), littleEndian(end - 2048)) << sectors;
        system.disk.sectors.clear();
    }
}

TEST_F(Fat32Format, TableCountsInTheDisksOwnSectors) {
    Volume& disk = useBlankDisk();
    disk.sectorSize = 4096;
    disk.bytes = disk.diskBytes = 4096ULL * 1'000'000;
    tellTheTable();
    EXPECT_EQ(run(), Status::Done);
    EXPECT_EQ(system.disk.read(0, 4096), partitionTable(4096, 256, 999'744, 0x12345678));
    expectFileSystem(1'048'576, 4096);
}

TEST_F(Fat32Format, WholeDiskWithPartitionsIsLeftAlone) {
    useBlankDisk().diskHasPartitions = true;
    expectRefusal(Status::HasPartitions, "has partitions");
}

// Sizes.

TEST_F(Fat32Format, DiskTooSmallForFat32) {
    Volume& disk = useBlankDisk();
    for (const std::uint64_t size : {512U, 1'048'576U, 1'048'576U + 512U, 34'000'000U}) {
        disk.bytes = disk.diskBytes = size;
        tellTheTable();
        expectRefusal(Status::Failed, "Drive E: is too small for FAT32");
    }
}

TEST_F(Fat32Format, DiskTooSmallForTheClusters) {
    partition().bytes = 256ULL * 1'048'576;
    tellTheTable();
    expectRefusal(Status::Failed, "Drive E: is too small for clusters of 64 sectors (-c64). "
                                  "What fits it: -c1, -c2, -c4.\n");
    partition().sectorSize = 4096;
    expectRefusal(Status::Failed, "is too small for FAT32");
    partition().bytes *= 2;
    expectRefusal(Status::Failed, "What fits it: -c1, -c2, -c4, -c8.\n");
    EXPECT_FALSE(said("(y/n)"));
}

TEST_F(Fat32Format, DiskTooLargeForTheClusters) {
    options.sectorsPerCluster = 1;
    expectRefusal(Status::Failed, "Drive E: is too large for clusters of 1 sector (-c1). "
                                  "What fits it: -c4, -c8, -c16, -c32, -c64, -c128.\n");
}

TEST_F(Fat32Format, SectorsThatFatDoesNotKnow) {
    partition().sectorSize = 8192;
    expectRefusal(Status::Failed, "sectors of a length that FAT does not know");
}

TEST_F(Fat32Format, StartThatTheBootSectorCannotCount) {
    Volume& volume = partition();
    for (const std::uint64_t sectors : {0xFFFF'FFFFULL, 0x1'0000'0000ULL, 0x2'0000'0000ULL}) {
        volume.start = sectors * 512;
        EXPECT_EQ(run(), Status::Done);
        const Bytes boot = system.disk.read(volume.start, 512);
        EXPECT_EQ(Bytes(boot.begin() + 28, boot.begin() + 32),
                  littleEndian(sectors == 0xFFFF'FFFFULL ? 0xFFFF'FFFF : 0));
    }
}
