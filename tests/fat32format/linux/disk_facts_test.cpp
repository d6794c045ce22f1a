#include "tools/fat32format/linux/disk_facts.h"

#include <gtest/gtest.h>

#include <fstream>
#include <stdlib.h>

using namespace fat32format;
namespace fs = std::filesystem;

namespace {

constexpr const char* usbDisk =
    "devices/pci0000:00/0000:00:14.0/usb2/2-1/2-1:1.0/host6/target6:0:0/6:0:0:0/block/sdb";
constexpr const char* inbuiltDisk =
    "devices/pci0000:00/0000:00:17.0/ata1/host0/target0:0:0/0:0:0:0/block/sda";

/// Tables of a made computer: a USB disk sdb with one partition, an inbuilt disk sda with two.
class DiskFacts : public testing::Test {
protected:
    DiskFacts() {
        std::string pattern = (fs::temp_directory_path() / "disk_facts_XXXXXX").string();
        base_ = mkdtemp(pattern.data());
        folders = {base_ / "sys", base_ / "proc", base_ / "udev"};
        addDisk(usbDisk, "8:16", 976'773'168);
        addPartition(std::string(usbDisk) + "/sdb1", "8:17", 1, 976'771'120);
        addDisk(inbuiltDisk, "8:0", 1'000'215'216);
        addPartition(std::string(inbuiltDisk) + "/sda1", "8:1", 1, 1'000'000);
        addPartition(std::string(inbuiltDisk) + "/sda2", "8:2", 2, 999'000'000);
        write("sys/devices/pci0000:00/0000:00:14.0/usb2/2-1/idVendor", "1234");
        write("sys/devices/pci0000:00/0000:00:14.0/usb2/2-1/serial", "USB-SERIAL");
        write("sys/devices/pci0000:00/0000:00:14.0/usb2/serial", "0000:00:14.0");
        write("sys/devices/pci0000:00/0000:00:14.0/usb2/idVendor", "1d6b");
        fs::create_directories(folders.sys / "block/loop0"); // with nothing behind it
        mount("8:2", "/", "ext4", "/dev/sda2");
        write("proc/swaps", "Filename\t\t\t\tType\t\tSize\t\tUsed\t\tPriority\n");
    }
    ~DiskFacts() override { fs::remove_all(base_); }

    void write(const fs::path& file, const std::string& text, std::ios::openmode mode = std::ios::trunc) {
        fs::create_directories((base_ / file).parent_path());
        std::ofstream(base_ / file, std::ios::out | mode) << text << '\n';
    }

    void addDevice(const fs::path& folder, const std::string& number, std::uint64_t sectors) {
        write("sys" / folder / "dev", number);
        write("sys" / folder / "size", std::to_string(sectors));
        write("sys" / folder / "ro", "0");
        fs::create_directories(folders.sys / folder / "holders");
        fs::create_directories(folders.sys / "dev/block");
        fs::create_symlink(folders.sys / folder, folders.sys / "dev/block" / number);
    }

    void addDisk(const fs::path& folder, const std::string& number, std::uint64_t sectors) {
        addDevice(folder, number, sectors);
        write("sys" / folder / "diskseq", "7");
        write("sys" / folder / "queue/logical_block_size", "512");
        write("sys" / folder / "device/vendor", "ACME    ");
        write("sys" / folder / "device/model", "Mobile Disk     ");
    }

    void addPartition(const fs::path& folder, const std::string& number, int index, std::uint64_t sectors) {
        addDevice(folder, number, sectors);
        write("sys" / folder / "partition", std::to_string(index));
        write("sys" / folder / "start", "2048");
    }

    void mount(const std::string& number, const std::string& place, const std::string& type,
               const std::string& source) {
        write("proc/self/mountinfo",
              "36 35 " + number + " / " + place + " rw,noatime master:1 shared:2 - " + type + " " + source +
                  " rw",
              std::ios::app);
    }

    Volume facts(unsigned minor) {
        const auto volume = readFacts(folders, 8, minor);
        EXPECT_TRUE(volume.has_value());
        return volume.value_or(Volume{});
    }

    FactFolders folders;

private:
    fs::path base_;
};

} // namespace

TEST_F(DiskFacts, Partition) {
    const Volume volume = facts(17);
    EXPECT_EQ(volume.node, "/dev/sdb1");
    EXPECT_EQ(volume.start, 1'048'576U);
    EXPECT_EQ(volume.diskNode, "/dev/sdb");
    EXPECT_TRUE(volume.isPartition);
    EXPECT_TRUE(volume.diskHasPartitions);
    EXPECT_EQ(volume.bytes, 500'106'813'440U);
    EXPECT_EQ(volume.diskBytes, 500'107'862'016U);
    EXPECT_EQ(volume.diskSequence, 7U);
    EXPECT_EQ(volume.sectorSize, 512U);
    EXPECT_EQ(volume.model, "ACME Mobile Disk");
    EXPECT_EQ(volume.shownSerial(), "USB-SERIAL");
    EXPECT_FALSE(volume.readOnly);
    EXPECT_FALSE(volume.systemUse);
    EXPECT_TRUE(volume.mounts.empty());
    EXPECT_EQ(volume.unreadable, "");
}

TEST_F(DiskFacts, WholeDisk) {
    const Volume volume = facts(16);
    EXPECT_EQ(volume.node, "/dev/sdb");
    EXPECT_EQ(volume.diskNode, "/dev/sdb");
    EXPECT_FALSE(volume.isPartition);
    EXPECT_TRUE(volume.diskHasPartitions);
    EXPECT_NE(volume.deviceNumber, facts(17).deviceNumber);
}

TEST_F(DiskFacts, LabelOfWhatTheVolumeHolds) {
    EXPECT_EQ(facts(17).label, "");
    write("udev/b8:16", "E:ID_FS_LABEL_ENC=DISK");
    EXPECT_EQ(facts(17).label, "") << "the disk's, not the partition's";
    write("udev/b8:17", "E:ID_FS_LABEL=MY_DISK");
    EXPECT_EQ(facts(17).label, "MY_DISK");
    write("udev/b8:17", "E:ID_FS_LABEL_ENC=My\\x20Disk\\x5cx41\\xc3\\xa4", std::ios::app);
    EXPECT_EQ(facts(17).label, "My Disk\\x41\xC3\xA4");
    for (const char* broken : {"A\\", "A\\x", "A\\x4", "A\\xzz", "A\\n41"}) {
        write("udev/b8:17", std::string("E:ID_FS_LABEL_ENC=") + broken);
        EXPECT_EQ(facts(17).label, broken);
    }
}

TEST_F(DiskFacts, BlankDisk) {
    fs::remove_all(folders.sys / usbDisk / "sdb1");
    EXPECT_FALSE(facts(16).diskHasPartitions);
}

TEST_F(DiskFacts, UnknownDevice) {
    EXPECT_FALSE(readFacts(folders, 8, 99).has_value());
}

TEST_F(DiskFacts, BusIsUsbWhenTheDiskHangsOnAUsbHost) {
    EXPECT_TRUE(facts(17).onUsb);
    EXPECT_TRUE(facts(16).onUsb);
    EXPECT_FALSE(facts(1).onUsb);
}

TEST_F(DiskFacts, BusIsUsbWhenUdevSaysSo) {
    write("udev/b8:0", "E:ID_BUS=usb");
    EXPECT_TRUE(facts(1).onUsb);
    write("udev/b8:0", "E:ID_BUS=ata");
    EXPECT_FALSE(facts(1).onUsb);
}

TEST_F(DiskFacts, SerialNumberFromUdevGoesFirst) {
    write("udev/b8:16", "S:disk/by-id/x\nE:ID_SERIAL=ACME_0815");
    EXPECT_EQ(facts(17).serial, "ACME_0815");
    write("udev/b8:16", "E:ID_SERIAL_SHORT=0815", std::ios::app);
    EXPECT_EQ(facts(17).serial, "0815");
}

TEST_F(DiskFacts, SerialNumberOfScsiCountsForScsiDisksOnly) {
    write("udev/b8:16", "E:ID_SERIAL_SHORT=0815\nE:ID_SCSI_SERIAL=4711");
    EXPECT_EQ(facts(17).serial, "0815");
    write("udev/b8:16", "E:ID_SCSI=1", std::ios::app);
    EXPECT_EQ(facts(17).serial, "4711");
    write("udev/b8:16", "E:ID_ATA=1", std::ios::app);
    EXPECT_EQ(facts(17).serial, "0815");
}

TEST_F(DiskFacts, SerialNumberThatUdevDoesNotKnowIsOnlyShown) {
    EXPECT_EQ(facts(17).serial, "") << "as the table of drives has it";
    EXPECT_EQ(facts(17).shownSerial(), "USB-SERIAL");
    write("udev/b8:16", "E:ID_SERIAL_SHORT=0815");
    EXPECT_EQ(facts(17).serial, "0815");
    EXPECT_EQ(facts(17).shownSerial(), "0815");
}

TEST_F(DiskFacts, SerialNumberOfAHubIsNotTheDisks) {
    fs::remove(folders.sys / "devices/pci0000:00/0000:00:14.0/usb2/2-1/serial");
    EXPECT_EQ(facts(17).shownSerial(), "");
}

TEST_F(DiskFacts, ReadOnlyDiskOrPartition) {
    write("sys" / fs::path(usbDisk) / "ro", "1");
    EXPECT_TRUE(facts(17).readOnly);
    EXPECT_TRUE(facts(16).readOnly);
}

TEST_F(DiskFacts, MountsOfTheUser) {
    mount("8:17", "/media/anna/MY\\040DISK", "vfat", "/dev/sdb1");
    mount("8:17", "/mnt", "vfat", "/dev/sdb1");
    mount("8:17", "/run/media/anna/x", "vfat", "/dev/sdb1");
    const Volume volume = facts(17);
    EXPECT_EQ(volume.mounts, (std::vector<Mount>{{"/dev/sdb1", "/media/anna/MY DISK"},
                                                 {"/dev/sdb1", "/mnt"},
                                                 {"/dev/sdb1", "/run/media/anna/x"}}));
    EXPECT_EQ(facts(16).mounts, volume.mounts) << "of the disk";
    EXPECT_FALSE(volume.systemUse);
}

TEST_F(DiskFacts, EveryOtherMountIsTheSystems) {
    EXPECT_TRUE(facts(2).systemUse);
    EXPECT_TRUE(facts(1).systemUse) << "another partition of the same disk";
    EXPECT_TRUE(facts(0).systemUse) << "the disk";
    for (const char* place :
         {"/", "/boot", "/boot/efi", "/home", "/var/lib/docker", "/srv/x", "/run/live/medium", "/media",
          "/mediathek", "/mnt2", "/home/anna/usb", "/tmp/x"})
        EXPECT_FALSE(isUsersPlace(place)) << place;
}

TEST_F(DiskFacts, SystemMountOnAUsbDisk) {
    mount("8:17", "/home", "ext4", "/dev/sdb1");
    EXPECT_TRUE(facts(17).systemUse);
    EXPECT_TRUE(facts(16).systemUse);
}

TEST_F(DiskFacts, FileSystemsWithNumbersOfTheirOwnAreKnownByTheirSource) {
    mount("0:45", "/media/anna/NTFS", "fuseblk", "/dev/sdb1");
    EXPECT_EQ(facts(17).mounts, (std::vector<Mount>{{"/dev/sdb1", "/media/anna/NTFS"}}));
    mount("0:46", "/data", "btrfs", "/dev/sdb1");
    EXPECT_TRUE(facts(17).systemUse);
}

TEST_F(DiskFacts, SwapSpace) {
    write("proc/swaps", "Filename Type Size Used Priority\n/dev/sdb1                  partition\t1\t0\t-2");
    EXPECT_TRUE(facts(17).systemUse);
    EXPECT_TRUE(facts(16).systemUse);
}

TEST_F(DiskFacts, VolumeGroupOrEncryptedVolumeInUse) {
    fs::create_directories(folders.sys / usbDisk / "sdb1/holders/dm-0");
    EXPECT_TRUE(facts(17).systemUse);
    EXPECT_TRUE(facts(16).systemUse);
}

TEST_F(DiskFacts, LoopDeviceOfTheDisk) {
    for (const char* other : {"/dev/sda1", "/home/anna/image", "/dev/sdb11", "/dev/sdb1.img"}) {
        write("sys/block/loop3/loop/backing_file", other);
        EXPECT_FALSE(facts(17).systemUse) << other;
    }
    for (const char* own : {"/dev/sdb", "/dev/sdb1", "/dev/sdb1 (deleted)"}) {
        write("sys/block/loop3/loop/backing_file", own);
        EXPECT_TRUE(facts(17).systemUse) << own;
        EXPECT_TRUE(facts(16).systemUse) << own;
    }
    EXPECT_EQ(facts(17).unreadable, "");
}

TEST_F(DiskFacts, LoopDeviceThatCannotBeRead) {
    const fs::path file = folders.sys / "block/loop3/loop/backing_file";
    fs::create_directories(file);
    EXPECT_EQ(facts(17).unreadable, file);
    fs::remove(file);
    fs::rename(folders.sys / "block", folders.sys / "kept");
    EXPECT_EQ(facts(17).unreadable, folders.sys / "block");
}

TEST_F(DiskFacts, NumberInTheTableThatIsNone) {
    mount("8:17", "/media/anna/A\\9xyB\\8\\0", "vfat", "/dev/sdb1");
    mount("8:17", "/media/anna/\\777\\303\\274", "vfat", "/dev/sdb1");
    const auto mounts = facts(17).mounts;
    ASSERT_EQ(mounts.size(), 2U);
    EXPECT_EQ(mounts[0].place, "/media/anna/A\\9xyB\\8\\0");
    EXPECT_EQ(mounts[1].place, "/media/anna/\\777ü");
}

// What cannot be read may be in use. A folder in the place of a file cannot be read, even by root, and a file
// cannot in the place of a folder.

TEST_F(DiskFacts, WhatCannotBeReadIsNamed) {
    mount("8:17", "/home", "ext4", "/dev/sdb1");
    const fs::path disk = folders.sys / usbDisk;
    for (const fs::path& file : {folders.proc / "self/mountinfo", folders.proc / "swaps", disk / "sdb1/dev",
                                 disk / "dev", disk / "sdb1/size", disk / "size", disk / "sdb1/ro",
                                 disk / "sdb1/start", disk / "diskseq", disk / "queue/logical_block_size"}) {
        const fs::path kept = file.string() + ".kept";
        fs::rename(file, kept);
        EXPECT_EQ(facts(17).unreadable, file) << "not there";
        fs::create_directory(file);
        EXPECT_EQ(facts(17).unreadable, file) << "not to be read";
        fs::remove(file);
        fs::rename(kept, file);
    }
    for (const fs::path& folder : {disk / "holders", disk / "sdb1/holders"}) {
        fs::remove(folder);
        EXPECT_EQ(facts(17).unreadable, folder) << "not there";
        std::ofstream(folder) << "x";
        EXPECT_EQ(facts(17).unreadable, folder) << "not to be read";
        fs::remove(folder);
        fs::create_directory(folder);
    }
    EXPECT_EQ(facts(17).unreadable, "");
}

TEST_F(DiskFacts, NumberThatIsNone) {
    const fs::path size = "sys" / fs::path(usbDisk) / "sdb1/size";
    for (const char* text : {"", "x", "12x", "-1", "99999999999999999999999"}) {
        write(size, text);
        EXPECT_TRUE(facts(17).unreadable.ends_with("/sdb1/size")) << text;
    }
}
