// The drive table over UDisks2: what tells a volume, and the disk that it is on, from others.
#include "platform/linux/drives/disk_note.h"
#include "platform/linux/drives/volume_folder.h"

#include "tests/conformance/linux/temporary_folder.h"
#include "tests/conformance/linux/udisks_table.h"

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>

using namespace conformance;
using namespace platform;
using linux::UdisksDrives;

namespace {

[[maybe_unused]] const auto* world = testing::AddGlobalTestEnvironment(new EventWorld);

} // namespace

/// A stick in that port, a copy of every other one: only the kernel's number tells them apart.
TEST_F(UdisksTable, IdentityOfCopiesThatFollowEachOther) {
    const TemporaryFolder devices;
    const auto plugIn = [&devices](const char* sequence) {
        std::filesystem::create_directories(devices.path() / "0:17");
        std::ofstream(devices.path() / "0:17" / "diskseq") << sequence << '\n';
    };
    UdisksDrives table("/proc/self/mounts", devices.path());
    addStick("sdb1", 17);
    plugIn("5");
    table.refresh();
    const std::string first = table.identity('D');
    EXPECT_NE(first, "");
    plugIn("6");
    EXPECT_NE(table.identity('D'), first) << "also before the service has noticed";
    plugIn("5");
    EXPECT_EQ(table.identity('D'), first);
}

TEST_F(UdisksTable, DiskThatIsStillTheListedOne) {
    const TemporaryFolder devices;
    std::filesystem::create_directories(devices.path() / "0:17");
    const auto plugIn = [&devices](const char* sequence, const char* size) {
        std::ofstream(devices.path() / "0:17" / "diskseq") << sequence << '\n';
        std::ofstream(devices.path() / "0:17" / "size") << size << '\n';
    };
    UdisksDrives table("/proc/self/mounts", devices.path());
    addStick("sdb1", 17);
    plugIn("5", "1000");
    table.refresh();
    EXPECT_TRUE(table.isOnListedDisk('D'));
    EXPECT_FALSE(table.isOnListedDisk('C'));
    EXPECT_FALSE(table.isOnListedDisk('Z'));
    plugIn("6", "1000");
    EXPECT_FALSE(table.isOnListedDisk('D')) << "another stick";
    plugIn("5", "2000");
    EXPECT_FALSE(table.isOnListedDisk('D')) << "another card";
    plugIn("5", "1000");
    EXPECT_TRUE(table.isOnListedDisk('D'));
    std::filesystem::remove(devices.path() / "0:17" / "diskseq");
    EXPECT_FALSE(table.isOnListedDisk('D')) << "pulled, or a kernel without such numbers";
    table.refresh();
    EXPECT_FALSE(table.isOnListedDisk('D'));
}

/// The service tells of a disk as soon as it knows it, and of its partitions one after the other.
TEST_F(UdisksTable, DiskIsNoDriveOnceTheKernelHasFoundItsPartitions) {
    const TemporaryFolder devices;
    const auto numbers = [&devices](const char* device) { return devices.path() / device; };
    std::filesystem::create_directories(numbers("0:16") / "queue");
    UdisksDrives table("/proc/self/mounts", devices.path());
    mock.add(drivePath("disk"), drive("WD 1"));
    mock.add(blockPath("sdb"), blankBlock("sdb", 16, "disk"));
    table.refresh();
    EXPECT_EQ(table.letters(), "CDZ") << "a blank one, for the assistant";
    std::filesystem::create_directories(numbers("0:16") / "sdb1");
    std::ofstream(numbers("0:16") / "sdb1" / "partition") << "1\n";
    table.refresh();
    EXPECT_EQ(table.letters(), "CZ");
    mock.add(blockPath("sdb1"), onTable(fileSystemBlock("sdb1", 17, "disk"), "sdb"));
    table.refresh();
    EXPECT_EQ(table.letters(), "CDZ");
    EXPECT_EQ(table.target('D'), "/dev/sdb1");
}

/// A disk in the place of another one, which the service takes notice of later.
TEST_F(UdisksTable, DiskIsTheOneThatWasListedFirst) {
    const TemporaryFolder devices;
    std::filesystem::create_directories(devices.path() / "0:17");
    std::ofstream(devices.path() / "0:17" / "size") << "1000\n";
    const auto plugIn = [&devices](const char* sequence) {
        std::ofstream(devices.path() / "0:17" / "diskseq") << sequence << '\n';
    };
    UdisksDrives table("/proc/self/mounts", devices.path());
    plugIn("5");
    mock.add(drivePath("disk"), drive("WD 1"));
    mock.add(blockPath("sdb"), blankBlock("sdb", 17, "disk"));
    table.refresh();
    EXPECT_EQ(table.disk('D'), "sequence=5,size=512000,serial=WD%201");
    plugIn("6");
    table.refresh();
    EXPECT_EQ(table.disk('D'), "sequence=5,size=512000,serial=WD%201");
    mock.remove(blockPath("sdb"));
    mock.remove(drivePath("disk"));
    mock.add(drivePath("other"), drive("WD 1", {{"TimeDetected", quint64{1'700'000'060'000'000}}}));
    mock.add(blockPath("sdb"), blankBlock("sdb", 17, "other"));
    table.refresh();
    const char letter = table.letters().at(1);
    ASSERT_EQ(table.target(letter), "/dev/sdb");
    EXPECT_EQ(table.disk(letter), "sequence=6,size=512000,serial=WD%201");
    EXPECT_EQ(table.disk('C'), "");
    EXPECT_EQ(table.disk('Z'), "");
}

/// A reader stays when its card is changed.
TEST_F(UdisksTable, DiskOfAMediumThatCanBeChangedIsThePresentOne) {
    const TemporaryFolder devices;
    std::filesystem::create_directories(devices.path() / "0:17");
    std::ofstream(devices.path() / "0:17" / "size") << "1000\n";
    UdisksDrives table("/proc/self/mounts", devices.path());
    addStick("sdb1", 17);
    for (const std::string sequence : {"5", "6"}) {
        std::ofstream(devices.path() / "0:17" / "diskseq") << sequence << '\n';
        table.refresh();
        EXPECT_TRUE(table.disk('D').starts_with("sequence=" + sequence + ',')) << table.disk('D');
    }
}

TEST(DiskNote, IsThatOfTheWholeDisk) {
    const TemporaryFolder devices;
    std::filesystem::create_directories(devices.path() / "sdb" / "sdb1");
    std::filesystem::create_directory_symlink("sdb", devices.path() / "8:16");
    std::filesystem::create_directory_symlink("sdb/sdb1", devices.path() / "8:17");
    std::ofstream(devices.path() / "sdb" / "diskseq") << "12\n";
    std::ofstream(devices.path() / "sdb" / "size") << "2000\n";
    std::ofstream(devices.path() / "sdb" / "sdb1" / "size") << "1000\n";
    std::ofstream(devices.path() / "sdb" / "sdb1" / "partition") << "1\n";
    const std::string note = "sequence=12,size=1024000,serial=";
    EXPECT_EQ(linux::diskNote(8 * 256 + 16, "", devices.path()), note);
    EXPECT_EQ(linux::diskNote(8 * 256 + 17, "", devices.path()), note);
    EXPECT_EQ(linux::diskNote(8 * 256 + 17, "a,b=/%ü_Z.-9", devices.path()),
              note + "a%2Cb%3D%2F%25%C3%BC_Z.-9");
    EXPECT_EQ(linux::diskNote(8 * 256 + 18, "", devices.path()), "");
    std::filesystem::remove(devices.path() / "sdb" / "diskseq");
    EXPECT_EQ(linux::diskNote(8 * 256 + 17, "", devices.path()), "");
}

TEST_F(UdisksTable, SequenceOfAPartitionIsThatOfItsDisk) {
    const TemporaryFolder devices;
    std::filesystem::create_directories(devices.path() / "sdb" / "sdb1");
    std::filesystem::create_directory_symlink("sdb", devices.path() / "8:16");
    std::filesystem::create_directory_symlink("sdb/sdb1", devices.path() / "8:17");
    std::ofstream(devices.path() / "sdb" / "diskseq") << "12\n";
    EXPECT_EQ(linux::diskSequence(8 * 256 + 16, devices.path()), "12");
    EXPECT_EQ(linux::diskSequence(8 * 256 + 17, devices.path()), "12");
    EXPECT_EQ(linux::diskSequence(8 * 256 + 18, devices.path()), "");
}

TEST_F(UdisksTable, IdentityChangesWithWhatIsInTheDrive) {
    addStick("sdb1", 17);
    const std::string first = drives.identity('D');
    mock.change(blockPath("sdb1"), blockInterface, {{"IdLabel", "NEW"}});
    drives.refresh();
    EXPECT_EQ(drives.identity('D'), first) << "a label is no other stick";
    const QVariantMap changes = {
        {"IdUUID", "BBBB-0002"}, {"DeviceNumber", quint64{18}}, {"Size", quint64{5'000'000'000}}};
    for (auto change = changes.begin(); change != changes.end(); ++change) {
        const std::string before = drives.identity('D');
        mock.change(blockPath("sdb1"), blockInterface, {{change.key(), change.value()}});
        drives.refresh();
        EXPECT_NE(drives.identity('D'), before) << change.key().toStdString();
    }
    mock.change(blockPath("sdb1"), blockInterface, {{"Size", quint64{0}}});
    drives.refresh();
    EXPECT_EQ(drives.identity('D'), "") << "without a medium";
    EXPECT_EQ(drives.identity('E'), "");
    EXPECT_NE(drives.identity('C'), "");
}

TEST_F(UdisksTable, BlankDiskHasAnIdentity) {
    mock.add(drivePath("disk"), drive("BLANK"));
    mock.add(blockPath("sdb"), blankBlock("sdb", 16, "disk"));
    const std::string blank = drives.identity('D');
    EXPECT_NE(blank, "");
    mock.remove(blockPath("sdb"));
    mock.remove(drivePath("disk"));
    mock.add(drivePath("other"), drive("OTHER"));
    mock.add(blockPath("sdb"), blankBlock("sdb", 16, "other"));
    drives.refresh();
    ASSERT_EQ(drives.target('E'), "/dev/sdb");
    EXPECT_NE(drives.identity('E'), blank);
    EXPECT_EQ(drives.identity('D'), "");
}

TEST_F(UdisksTable, RootOfAVolumeIsKnownByItsDevice) {
    addStick("sdb1", mock.mountDevice());
    addStick("sdc1", mock.mountDevice() + 1);
    struct stat folder = {};
    ASSERT_EQ(stat(drives.folder('D')->c_str(), &folder), 0);
    EXPECT_TRUE(drives.isRoot('D', folder));
    EXPECT_FALSE(drives.isRoot('E', folder));
    EXPECT_FALSE(drives.isRoot('F', folder));
    ASSERT_EQ(stat("/", &folder), 0);
    EXPECT_TRUE(drives.isRoot('C', folder));
}
