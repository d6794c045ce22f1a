#include "tools/fat32format/formatter.h"

#include "tests/fat32format/fake_system.h"
#include "tools/fat32format/size_text.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace fat32format;

namespace {

class Fat32Format : public testing::Test {
protected:
    Fat32Format() { system.volumes["/dev/sdb1"] = usbPartition(); }

    Volume& partition() { return system.volumes["/dev/sdb1"]; }

    Volume& useBlankDisk() {
        system.table['E'].node = "/dev/sdb";
        return system.volumes["/dev/sdb"] = blankDisk();
    }
    /// What the table of drives tells is true again, after a change of the volumes.
    void tellTheTable() {
        Target& target = system.table['E'];
        target.disk = system.volumes[target.node].identity();
    }

    Status run() { return format(system, options); }

    bool said(const std::string& text) const { return system.output.find(text) != std::string::npos; }

    /// It says so, does not say it has worked, and has not touched the disk.
    void expectRefusal(Status status, const std::string& reason) {
        EXPECT_EQ(run(), status);
        EXPECT_TRUE(said(reason)) << system.output;
        EXPECT_FALSE(said("Done")) << system.output;
        EXPECT_TRUE(system.disk.sectors.empty());
        EXPECT_EQ(system.disk.flushed, 0);
    }
    /// That there is a file system, and nothing else, from that place on; returns its first sector.
    Bytes expectFileSystem(std::uint64_t place, std::uint32_t size = 512) {
        const auto& sectors = system.disk.sectors;
        Bytes boot = system.disk.read(place, size);
        EXPECT_EQ(std::string(boot.begin() + 82, boot.begin() + 90), "FAT32   ");
        const auto count = std::distance(sectors.lower_bound(place), sectors.end());
        EXPECT_EQ(count, 6) << "two boot sectors, two of information, two tables";
        return boot;
    }

    FakeSystem system;
    Options options{'E', 64, false};
};

Bytes littleEndian(std::uint32_t number) {
    Bytes bytes;
    for (unsigned shift = 0; shift < 32; shift += 8)
        bytes.push_back(static_cast<unsigned char>(number >> shift & 0xFFU));
    return bytes;
}

} // namespace

TEST_F(Fat32Format, FormatsAPartition) {
    EXPECT_EQ(run(), Status::Done);
    const Bytes boot = expectFileSystem(1'048'576);
    EXPECT_EQ(boot[13], 64) << "sectors a cluster";
    EXPECT_EQ(system.disk.sectors.begin()->first, 1'048'576U) << "nothing in front of the partition";
    EXPECT_EQ(system.opened, std::vector{Access::Alone});
    EXPECT_GT(system.disk.flushed, 0);
    EXPECT_FALSE(system.disk.tableRead);
    EXPECT_TRUE(system.output.ends_with("\n100 percent completed.\nDone\n")) << system.output;
}

TEST_F(Fat32Format, TellsWhichDiskBeforeItAsks) {
    std::string before;
    system.onQuestion = [&] { before = system.output; };
    run();
    EXPECT_EQ(before, "Drive E: is partition /dev/sdb1, 500.1 GB, of this disk:\n"
                      "  Model:  ACME Mobile Disk\n"
                      "  Serial: 0123456789\n"
                      "  Size:   500.1 GB\n"
                      "Everything on it will be lost.\n"
                      "Format drive E: (y/n)? ");
}

TEST_F(Fat32Format, DiskWithoutNames) {
    partition().model.clear();
    partition().serial.clear();
    tellTheTable();
    EXPECT_EQ(run(), Status::Done);
    EXPECT_TRUE(said("Model:  unknown\n  Serial: unknown\n"));
}

TEST_F(Fat32Format, SerialThatOnlyTheDeviceTellsIsShown) {
    partition().serial.clear();
    partition().deviceSerial = "4711";
    tellTheTable();
    EXPECT_EQ(system.table['E'].disk->serial, "") << "what the table tells is compared, and nothing else";
    EXPECT_EQ(run(), Status::Done);
    EXPECT_TRUE(said("Serial: 4711\n")) << system.output;
}

TEST_F(Fat32Format, NameOfADiskCannotPassForSuccess) {
    partition().model = "Done\nDone \x1B[2J";
    system.answer = "n";
    expectRefusal(Status::Declined, "Model:  DONE DONE  [2J\n");
}

TEST_F(Fat32Format, ShowsProgress) {
    run();
    std::string steps = "bytes a cluster...\n";
    for (int percent = 10; percent <= 100; percent += 10)
        steps += std::to_string(percent) + " percent completed.\n";
    EXPECT_TRUE(said(steps)) << system.output;
}

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

TEST_F(Fat32Format, LetterThatIsNotInTheTable) {
    options.letter = 'F';
    expectRefusal(Status::UnknownLetter, "There is no drive F:.");
}

TEST_F(Fat32Format, NoTableOfDrives) {
    system.problemOfTable = "There is no table.";
    expectRefusal(Status::UnknownLetter, "There is no table.\n");
}

TEST_F(Fat32Format, LetterOfAFolder) {
    system.table['E'].node = "/home/anna/stick";
    expectRefusal(Status::NoDisk, "Drive E: is no disk.");
}

TEST_F(Fat32Format, DriveWithoutAMedium) {
    partition().bytes = 0;
    expectRefusal(Status::NoDisk, "Drive E: has no medium.");
}

TEST_F(Fat32Format, SystemItself) {
    options.letter = 'C';
    expectRefusal(Status::SystemVolume, "The system uses the disk of drive C:");
}

TEST_F(Fat32Format, DiskInTheUseOfTheSystem) {
    partition().systemUse = true;
    expectRefusal(Status::SystemVolume, "The system uses the disk of drive E:");
    options.anyBus = true;
    EXPECT_EQ(run(), Status::SystemVolume);
}

TEST_F(Fat32Format, DiskThatIsNotOnUsb) {
    partition().onUsb = false;
    expectRefusal(Status::NotOnUsb, "not connected by USB");
}

TEST_F(Fat32Format, DiskOnAnyBusWhenThatIsAllowed) {
    partition().onUsb = false;
    options.anyBus = true;
    EXPECT_EQ(run(), Status::Done);
}

TEST_F(Fat32Format, WriteProtectedDisk) {
    partition().readOnly = true;
    expectRefusal(Status::WriteProtected, "Drive E: is write-protected.");
}

TEST_F(Fat32Format, AnythingButYesIsNo) {
    for (const auto& answer :
         std::vector<std::optional<std::string>>{std::nullopt, "", "n", "Y", "yes", " y", "y "}) {
        system.answer = answer;
        expectRefusal(Status::Declined, "Nothing has been changed.");
    }
    EXPECT_TRUE(system.unmounted.empty());
}

// Mounts.

TEST_F(Fat32Format, UnmountsWhatTheUserHasMounted) {
    partition().mounts = {{"/dev/sdb1", "/media/anna/DISK"}, {"/dev/sdb2", "/mnt/disk"}};
    EXPECT_EQ(run(), Status::Done);
    EXPECT_EQ(system.unmounted, (std::vector<std::string>{"/mnt/disk", "/media/anna/DISK"}));
    EXPECT_TRUE(said("/dev/sdb1 is in use at /media/anna/DISK and will be unmounted.\n"
                     "/dev/sdb2 is in use at /mnt/disk and will be unmounted.\n"));
    EXPECT_EQ(system.opened, (std::vector{Access::Look, Access::Alone}));
}

TEST_F(Fat32Format, MountThatIsBusy) {
    partition().mounts = {{"/dev/sdb1", "/media/anna/DISK"}};
    system.unmounts = false;
    expectRefusal(Status::InUse, "Some program uses files in /media/anna/DISK.");
}

TEST_F(Fat32Format, MountThatComesBack) {
    partition().mounts = {{"/dev/sdb1", "/media/anna/DISK"}};
    system.mountsAgain = true;
    expectRefusal(Status::InUse, "mounted again");
}

TEST_F(Fat32Format, VolumeThatIsChangedThroughItsMount) {
    partition().mounts = {{"/dev/sdb1", "/media/anna/DISK"}};
    system.contents = {{"ext4", false}};
    system.onUnmount = [this] { system.contents = {{"LUKS", false}}; };
    expectRefusal(Status::DiskChanged, "another disk");
}

TEST_F(Fat32Format, DiskThatIsExchangedWhileItIsUnmounted) {
    partition().mounts = {{"/dev/sdb1", "/media/anna/DISK"}};
    system.onUnmount = [this] { partition().diskSequence = 8; };
    expectRefusal(Status::OtherDisk, "another disk");
}

// What is open, and what it holds.

TEST_F(Fat32Format, DiskInUseThatNoTableTellsOf) {
    system.outcomes[Access::Alone] = Opened::Outcome::InUse;
    expectRefusal(Status::InUse, "Something else uses the disk of drive E:");
    EXPECT_FALSE(said("(y/n)"));
}

TEST_F(Fat32Format, MountedDiskInUseThatNoTableTellsOf) {
    partition().mounts = {{"/dev/sdb1", "/media/anna/DISK"}};
    system.outcomes[Access::Alone] = Opened::Outcome::InUse;
    expectRefusal(Status::InUse, "Something else uses the disk of drive E:");
}

TEST_F(Fat32Format, RefusedAuthorisation) {
    system.outcomes[Access::Alone] = Opened::Outcome::NotAllowed;
    expectRefusal(Status::NotAuthorised, "authorisation");
    EXPECT_FALSE(said("(y/n)"));
}

TEST_F(Fat32Format, DiskThatIsExchangedWhileThePasswordIsAsked) {
    const std::vector<std::function<void()>> changes = {
        [this] { partition().diskSequence = 8; },
        [this] { partition().serial = "another"; },
        [this] { partition().diskBytes -= 512; },
        [this] { system.volumes.clear(); },
    };
    for (const bool isMounted : {false, true}) {
        for (const auto& change : changes) {
            partition() = usbPartition();
            if (isMounted) partition().mounts = {{"/dev/sdb1", "/media/anna/DISK"}};
            system.onOpen = change;
            expectRefusal(Status::DiskChanged, "another disk");
        }
    }
}

TEST_F(Fat32Format, DiskThatCannotBeOpened) {
    system.outcomes[Access::Alone] = Opened::Outcome::Failed;
    expectRefusal(Status::Failed, "Drive E: cannot be opened. as the test wants it");
}

TEST_F(Fat32Format, QuestionNamesWhatTheVolumeHolds) {
    system.contents = {{"LUKS", false}, {"Done", false}};
    system.answer = "n";
    expectRefusal(Status::Declined, "\nenthält: LUKS, DONE\nEverything on it will be lost.\n");
}

TEST_F(Fat32Format, MemberOfASetIsLeftAlone) {
    system.contents = {{"FAT", false}, {"LVM", true}};
    expectRefusal(Status::MemberOfSet, "/dev/sdb1 belongs to a set of devices: LVM.");
    system.contents.clear();
    system.besidePartitions = {{"RAID", true}};
    expectRefusal(Status::MemberOfSet, "/dev/sdb1 belongs to a set of devices: RAID.");
    EXPECT_FALSE(said("(y/n)"));
}

// Which disk the user was shown.

TEST_F(Fat32Format, TableThatDoesNotTellWhichDiskItIs) {
    system.table['E'].disk.reset();
    expectRefusal(Status::OtherDisk, "does not tell which disk drive E: is.\n");
}

TEST_F(Fat32Format, SystemThatDoesNotNumberDisks) {
    partition().diskSequence = 0;
    system.table['E'].disk.reset();
    expectRefusal(Status::OtherDisk,
                  "does not tell which disk drive E: is. Linux numbers disks from 5.15 on.\n");
}

TEST_F(Fat32Format, AnotherDiskThanTheTableTellsOf) {
    const std::vector<std::function<void(DiskIdentity&)>> changes = {
        [](DiskIdentity& disk) { ++disk.sequence; },
        [](DiskIdentity& disk) { disk.bytes -= 512; },
        [](DiskIdentity& disk) { disk.serial += '0'; },
    };
    for (const auto& change : changes) {
        tellTheTable();
        change(*system.table['E'].disk);
        expectRefusal(Status::OtherDisk, "another disk than the table of drives tells of");
    }
}

TEST_F(Fat32Format, UseThatCannotBeTold) {
    partition().unreadable = "/proc/self/mountinfo";
    expectRefusal(Status::SystemVolume, "cannot be told: /proc/self/mountinfo cannot be read.");
}

// What changes while the user thinks.

TEST_F(Fat32Format, AnotherDiskBehindTheLetter) {
    system.onQuestion = [this] { partition().serial = "another"; };
    expectRefusal(Status::OtherDisk, "another disk");
}

TEST_F(Fat32Format, AnotherDiskBehindTheLetterThatTheTableKnows) {
    system.onQuestion = [this] {
        partition().serial = "another";
        tellTheTable();
    };
    expectRefusal(Status::DiskChanged, "another disk");
}

TEST_F(Fat32Format, SameDiskPluggedInAgain) {
    system.onQuestion = [this] {
        partition().diskSequence = 8;
        tellTheTable();
    };
    expectRefusal(Status::DiskChanged, "another disk");
}

TEST_F(Fat32Format, EveryFactOfTheDiskCounts) {
    const Volume volume = usbPartition();
    EXPECT_TRUE(volume.isSameAs(usbPartition()));
    const std::vector<std::function<void(Volume&)>> changes = {
        [](Volume& v) { v.node = "/dev/sdc1"; }, [](Volume& v) { v.deviceNumber = 33; },
        [](Volume& v) { v.diskSequence = 8; },   [](Volume& v) { v.model = "x"; },
        [](Volume& v) { v.serial = "x"; },       [](Volume& v) { v.diskBytes -= 512; },
        [](Volume& v) { v.bytes -= 512; },       [](Volume& v) { v.isPartition = false; },
        [](Volume& v) { v.start += 512; },       [](Volume& v) { v.sectorSize = 4096; },
        [](Volume& v) { v.deviceSerial = "x"; },
    };
    for (std::size_t i = 0; i < changes.size(); ++i) {
        Volume other = volume;
        changes[i](other);
        EXPECT_FALSE(volume.isSameAs(other)) << i;
    }
}

TEST_F(Fat32Format, LetterThatGoes) {
    system.onQuestion = [this] { system.table.erase('E'); };
    expectRefusal(Status::UnknownLetter, "There is no drive E:.");
}

TEST_F(Fat32Format, DiskThatIsPulled) {
    system.onQuestion = [this] { system.volumes.clear(); };
    expectRefusal(Status::NoDisk, "Drive E: is no disk.");
}

TEST_F(Fat32Format, DiskThatTheSystemTakes) {
    system.onQuestion = [this] { partition().systemUse = true; };
    expectRefusal(Status::SystemVolume, "The system uses");
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
    for (const std::uint64_t sectors : {0xFFFF'FFFEUL, 0xFFFF'FFFFUL, 0x1'0000'0000UL, 0x2'0000'0000UL}) {
        disk.bytes = disk.diskBytes = sectors * 512;
        tellTheTable();
        EXPECT_EQ(run(), Status::Done);
        const auto end = static_cast<std::uint32_t>(std::min(sectors, 0xFFFF'FFFFUL));
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

TEST_F(Fat32Format, DiskTooSmallForAPartition) {
    Volume& disk = useBlankDisk();
    for (const std::uint64_t size : {512U, 1'048'576U, 1'048'576U + 512U}) {
        disk.bytes = disk.diskBytes = size;
        tellTheTable();
        expectRefusal(Status::Failed, "too small");
    }
}

TEST_F(Fat32Format, DiskTooLargeForTheClusters) {
    options.sectorsPerCluster = 1;
    expectRefusal(Status::Failed, "too large for clusters of this size");
}

TEST_F(Fat32Format, WholeDiskWithPartitionsIsLeftAlone) {
    useBlankDisk().diskHasPartitions = true;
    expectRefusal(Status::HasPartitions, "has partitions");
}

TEST(SizeText, IsAsDisksAreSold) {
    EXPECT_EQ(sizeText(0), "0.0 kB");
    EXPECT_EQ(sizeText(512), "0.5 kB");
    EXPECT_EQ(sizeText(999'999), "999.9 kB");
    EXPECT_EQ(sizeText(1'000'000), "1.0 MB");
    EXPECT_EQ(sizeText(500'107'862'016), "500.1 GB");
    EXPECT_EQ(sizeText(18'000'207'937'536), "18.0 TB");
    EXPECT_EQ(sizeText(18'446'744'073'709'551'615U), "18446.7 PB");
}
