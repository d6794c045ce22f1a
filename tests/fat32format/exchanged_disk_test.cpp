// Another disk behind the letter than the one that the user was shown, or none any more, at any time.
#include "tests/fat32format/formatter_fixture.h"

#include <functional>
#include <vector>

using namespace fat32format;

// By the table of drives.

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
        expectRefusal(Status::OtherDisk, "Drive E: is another disk than it was known for.");
    }
}

// Before the question.

TEST_F(Fat32Format, DiskThatIsExchangedWhileItIsUnmounted) {
    partition().mounts = {{"/dev/sdb1", "/media/anna/DISK"}};
    system.onUnmount = [this] { partition().diskSequence = 8; };
    expectRefusal(Status::OtherDisk, "another disk");
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

// While the question is open.

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
