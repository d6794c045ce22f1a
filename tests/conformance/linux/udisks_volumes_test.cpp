// Which block devices become drives, of which type, under which name and with which letter.
#include "platform/linux/drives/drive_letters.h"
#include "platform/linux/drives/udisks_volumes.h"

#include "tests/conformance/linux/udisks_objects.h"

#include <gtest/gtest.h>

using namespace conformance;
using namespace platform;
using linux::DriveLetters;
using linux::UdisksVolume;
using linux::udisksVolumes;
using linux::windowsFileSystemName;

namespace {

std::vector<std::string> devices(const Objects& objects) {
    std::vector<std::string> names;
    for (const UdisksVolume& volume : udisksVolumes(objects))
        names.push_back(volume.device);
    return names;
}

DriveType typeOn(const Interfaces& drive) {
    const Objects objects = {{drivePath("d"), drive}, {blockPath("sdb"), blankBlock("sdb", 16, "d")}};
    return udisksVolumes(objects).at(0).type;
}

/// A volume of a drive of its own.
UdisksVolume volume(const QString& name) {
    UdisksVolume result;
    result.object = result.disk = name;
    result.driveSerial = name;
    return result;
}

std::string assigned(DriveLetters& letters, std::vector<UdisksVolume> volumes) {
    letters.assign(volumes);
    std::string text;
    for (const UdisksVolume& one : volumes)
        text += one.letter + ("=" + one.object.toStdString() + " ");
    return text;
}

} // namespace

TEST(UdisksVolumes, StickAndItsFacts) {
    const Objects objects = {{drivePath("d"), stickDrive("S1")},
                             {blockPath("sdb1"), fileSystemBlock("sdb1", 17, "d", fat32("ORVANTA", "11-22"),
                                                                 {"/media/me/ORVANTA"})}};
    const std::vector<UdisksVolume> volumes = udisksVolumes(objects);
    ASSERT_EQ(volumes.size(), 1U);
    EXPECT_EQ(volumes[0].type, DriveRemovable);
    EXPECT_EQ(volumes[0].device, "/dev/sdb1");
    EXPECT_EQ(volumes[0].driveSerial, "S1");
    EXPECT_EQ(volumes[0].uuid, "11-22");
    EXPECT_EQ(volumes[0].size, 4'000'000'000U);
    EXPECT_EQ(volumes[0].names.label, "ORVANTA");
    EXPECT_EQ(volumes[0].names.fileSystem, "FAT32");
    EXPECT_EQ(volumes[0].folders, std::vector<std::string>{"/media/me/ORVANTA"});
}

TEST(UdisksVolumes, MakerAndModelAreTheDrives) {
    const Objects objects = {{drivePath("d"), drive("S1", {{"Vendor", "WD"}, {"Model", "Elements 25A2"}})},
                             {blockPath("sdb"), blankBlock("sdb", 16, "d")}};
    EXPECT_EQ(udisksVolumes(objects).at(0).maker, "WD");
    EXPECT_EQ(udisksVolumes(objects).at(0).model, "Elements 25A2");
}

TEST(UdisksVolumes, TypeFollowsTheMedium) {
    EXPECT_EQ(typeOn(stickDrive("S")), DriveRemovable);
    EXPECT_EQ(typeOn(drive("usb disk", {{"Removable", true}})), DriveFixed);
    EXPECT_EQ(typeOn(drive("card", {{"Media", "flash_sd"}})), DriveRemovable);
    EXPECT_EQ(typeOn(drive("empty slot", {{"MediaCompatibility", QStringList{"flash_ms"}}})), DriveRemovable);
    EXPECT_EQ(typeOn(drive("cd", {{"Optical", true}, {"MediaRemovable", true}})), DriveCdRom);
    EXPECT_EQ(
        typeOn(drive("no cd", {{"MediaRemovable", true}, {"MediaCompatibility", QStringList{"optical_cd"}}})),
        DriveCdRom);
}

TEST(UdisksVolumes, LeavesOutWhatIsNoUsersVolume) {
    const QVariantMap swap = {{"IdUsage", "other"}, {"IdType", "swap"}};
    const QVariantMap encrypted = {{"IdUsage", "crypto"}, {"IdType", "crypto_LUKS"}};
    Interfaces loop = fileSystemBlock("loop0", 700, "");
    loop["org.freedesktop.UDisks2.Loop"] = {};
    Objects objects = {{drivePath("d"), drive("S")},
                       {blockPath("sda1"), fileSystemBlock("sda1", 1, "d", {{"HintIgnore", true}})},
                       {blockPath("sda2"), blankBlock("sda2", 2, "d", swap)},
                       {blockPath("sda3"), fileSystemBlock("sda3", 3, "d", {{"HintSystem", true}})},
                       {blockPath("sda5"), blankBlock("sda5", 5, "d", encrypted)},
                       {blockPath("loop0"), loop},
                       {blockPath("loop1"), fileSystemBlock("loop1", 701, "")},
                       {QDBusObjectPath(linux::udisks::managerPath), {}}};
    EXPECT_EQ(devices(objects), std::vector<std::string>());
    // The same things without what rules them out.
    objects[blockPath("sda1")] = fileSystemBlock("sda1", 1, "d");
    EXPECT_EQ(devices(objects), std::vector<std::string>{"/dev/sda1"});
}

TEST(UdisksVolumes, SystemVolumeAtTheRootIsIn) {
    const Objects objects = {
        {blockPath("sda1"), fileSystemBlock("sda1", 1, "", {{"HintSystem", true}}, {"/boot"})},
        {blockPath("sda2"), fileSystemBlock("sda2", 2, "", {{"HintSystem", true}}, {"/var", "/"})}};
    const std::vector<UdisksVolume> volumes = udisksVolumes(objects);
    ASSERT_EQ(volumes.size(), 1U);
    EXPECT_EQ(volumes[0].device, "/dev/sda2");
    EXPECT_TRUE(volumes[0].holdsRoot);
}

TEST(UdisksVolumes, DividedDiskIsItsPartitions) {
    const Objects objects = {{drivePath("d"), drive("S")},
                             {blockPath("sdb"), withTable(blankBlock("sdb", 16, "d"))},
                             {blockPath("sdb1"), onTable(fileSystemBlock("sdb1", 17, "d"), "sdb")},
                             {blockPath("sdb2"), onTable(blankBlock("sdb2", 18, "d"), "sdb", true)},
                             {blockPath("sdb5"), onTable(fileSystemBlock("sdb5", 21, "d"), "sdb")}};
    EXPECT_EQ(devices(objects), (std::vector<std::string>{"/dev/sdb1", "/dev/sdb5"}));
    EXPECT_EQ(udisksVolumes(objects)[1].disk, blockPath("sdb").path());
}

TEST(UdisksVolumes, BlankDisksAreIn) {
    const Objects objects = {{drivePath("d"), drive("S")},
                             {blockPath("sdb"), blankBlock("sdb", 16, "d")},
                             {blockPath("sdc"), withTable(blankBlock("sdc", 32, "d"))}};
    EXPECT_EQ(devices(objects), (std::vector<std::string>{"/dev/sdb", "/dev/sdc"}));
    EXPECT_FALSE(udisksVolumes(objects)[0].hasFileSystem);
}

TEST(UdisksVolumes, OpenedEncryptedVolumeIsOnTheDriveOfTheClosedOne) {
    Interfaces opened = fileSystemBlock("dm-0", 900, "");
    opened[blockInterface]["CryptoBackingDevice"] = QVariant::fromValue(blockPath("sdb1"));
    const Objects objects = {{drivePath("d"), stickDrive("S")},
                             {blockPath("sdb1"), blankBlock("sdb1", 17, "d", {{"IdUsage", "crypto"}})},
                             {blockPath("dm_2d0"), opened}};
    ASSERT_EQ(devices(objects), std::vector<std::string>{"/dev/dm-0"});
    EXPECT_EQ(udisksVolumes(objects)[0].type, DriveRemovable);
}

TEST(UdisksVolumes, DescriptionWithoutPropertiesIsHarmless) {
    const Objects objects = {{blockPath("sdb"), {{blockInterface, {}}}}, {blockPath("sdc"), {}}};
    EXPECT_EQ(devices(objects), std::vector<std::string>{""});
}

TEST(UdisksVolumes, LabelOfFatIsInTheCodePageOfDos) {
    const auto labelOf = [](const QString& shown, const QByteArray& link, const char* type = "vfat") {
        const QByteArrayList links = {QByteArray("/dev/disk/by-id/x\0", 18), link + '\0'};
        const Objects objects = {
            {drivePath("d"), stickDrive("S")},
            {blockPath("sdb1"),
             fileSystemBlock(
                 "sdb1", 17, "d",
                 {{"IdLabel", shown}, {"IdType", type}, {"Symlinks", QVariant::fromValue(links)}})}};
        return udisksVolumes(objects)[0].names.label;
    };
    EXPECT_EQ(labelOf("M", "/dev/disk/by-label/M\\x9aLL"), "MÜLL");
    EXPECT_EQ(labelOf("", "/dev/disk/by-label/\\x99\\x20L"), "Ö L");
    EXPECT_EQ(labelOf("Größe", "/dev/disk/by-label/Gr\xC3\xB6\xC3\x9F"
                               "e"),
              "Größe");
    EXPECT_EQ(labelOf("PLAIN", "/dev/disk/by-uuid/M\\x9aLL"), "PLAIN");
    EXPECT_EQ(labelOf("M", "/dev/disk/by-label/M\\x9aLL", "exfat"), "M");
    EXPECT_EQ(labelOf("M", "/dev/disk/by-label/M\\x"), "M");
}

TEST(UdisksVolumes, FileSystemNames) {
    EXPECT_EQ(windowsFileSystemName("vfat", "FAT32"), "FAT32");
    EXPECT_EQ(windowsFileSystemName("vfat", "FAT16"), "FAT");
    EXPECT_EQ(windowsFileSystemName("vfat", "FAT12"), "FAT");
    EXPECT_EQ(windowsFileSystemName("exfat", "1.0"), "exFAT");
    EXPECT_EQ(windowsFileSystemName("ntfs", ""), "NTFS");
    EXPECT_EQ(windowsFileSystemName("iso9660", "Joliet Extension"), "CDFS");
    EXPECT_EQ(windowsFileSystemName("udf", ""), "UDF");
    EXPECT_EQ(windowsFileSystemName("ext4", "1.0"), "ext4");
}

TEST(DriveLetters, NewVolumesStandBehindOlderOnes) {
    DriveLetters letters;
    EXPECT_EQ(assigned(letters, {volume("a"), volume("b"), volume("c")}), "D=a E=b F=c ");
    EXPECT_EQ(assigned(letters, {volume("new"), volume("b"), volume("c")}), "E=b F=c G=new ");
    EXPECT_EQ(assigned(letters, {volume("b")}), "E=b ");
    EXPECT_EQ(assigned(letters, {volume("z"), volume("b")}), "E=b H=z ");
}

TEST(DriveLetters, ALetterThatWasGivenNeverMeansAnotherDisk) {
    DriveLetters letters;
    EXPECT_EQ(assigned(letters, {volume("a")}), "D=a ");
    EXPECT_EQ(assigned(letters, {}), "");
    EXPECT_EQ(assigned(letters, {volume("b")}), "E=b ");
    UdisksVolume again = volume("a");
    again.driveDetected = 60'000'000; // plugged in anew: who knows what happened to it meanwhile
    EXPECT_EQ(assigned(letters, {again}), "F=a ");
}

TEST(DriveLetters, AVolumeThatWasNotListedForAWhileKeepsItsLetter) {
    DriveLetters letters;
    assigned(letters, {volume("a"), volume("b")});
    EXPECT_EQ(assigned(letters, {}), "");
    EXPECT_EQ(assigned(letters, {volume("new"), volume("b"), volume("a")}), "D=a E=b F=new ");
}

TEST(DriveLetters, FromDOnAgainOnceYHasBeenGiven) {
    DriveLetters letters;
    for (char letter = 'D'; letter <= 'Y'; ++letter) {
        const std::string wanted = {letter, '=', letter, ' '};
        EXPECT_EQ(assigned(letters, {volume(QString(QLatin1Char(letter)))}), wanted);
    }
    EXPECT_EQ(assigned(letters, {volume("Y"), volume("next")}), "D=next Y=Y ");
    EXPECT_EQ(assigned(letters, {volume("Y"), volume("D")}), "D=D Y=Y ") << "the letter has a new owner";
}

TEST(DriveLetters, ADiskThatIsDividedHandsItsLetterOn) {
    DriveLetters letters;
    const auto partition = [](const QString& name) {
        UdisksVolume one = volume(name);
        one.disk = one.driveSerial = "sdb";
        return one;
    };
    EXPECT_EQ(assigned(letters, {volume("sda"), volume("sdb")}), "D=sda E=sdb ");
    EXPECT_EQ(assigned(letters, {volume("sda"), partition("sdb1"), partition("sdb2")}),
              "D=sda E=sdb1 F=sdb2 ");
    EXPECT_EQ(assigned(letters, {volume("sda"), volume("sdb")}), "D=sda E=sdb ");
}

TEST(DriveLetters, LowestFreeLetterOnceTheLastOneIsTaken) {
    DriveLetters letters;
    std::vector<UdisksVolume> volumes;
    for (char name = 'd'; name <= 'y'; ++name)
        volumes.push_back(volume(QString(QLatin1Char(name))));
    letters.assign(volumes);
    ASSERT_EQ(volumes.size(), 22U);
    EXPECT_EQ(volumes.back().letter, 'Y');
    std::erase_if(volumes, [](const UdisksVolume& one) { return one.letter == 'F' || one.letter == 'M'; });
    for (const char* name : {"one", "two", "three"})
        volumes.push_back(volume(name));
    letters.assign(volumes);
    ASSERT_EQ(volumes.size(), 22U); // none was left for the third
    EXPECT_EQ(volumes[2].object, "one");
    EXPECT_EQ(volumes[2].letter, 'F');
    EXPECT_EQ(volumes[9].object, "two");
}

TEST(DriveLetters, FloppyDrivesComeFirst) {
    DriveLetters letters;
    std::vector<UdisksVolume> volumes = {volume("stick"), volume("fd0"), volume("fd1"), volume("fd2")};
    for (std::size_t i = 1; i < 4; ++i)
        volumes[i].floppy = true;
    EXPECT_EQ(assigned(letters, volumes), "A=fd0 B=fd1 D=stick E=fd2 ");
}

TEST(DriveLetters, RootIsC) {
    DriveLetters letters;
    UdisksVolume root = volume("root");
    root.holdsRoot = true;
    UdisksVolume otherHalf = volume("other half");
    otherHalf.holdsRoot = true;
    EXPECT_EQ(assigned(letters, {volume("stick"), root, otherHalf}), "C=root D=stick ");
}

TEST(DriveLetters, AnotherDriveAtTheSamePlaceIsNew) {
    DriveLetters letters;
    assigned(letters, {volume("a"), volume("b"), volume("c")});
    UdisksVolume other = volume("a");
    other.driveSerial = "another";
    EXPECT_EQ(assigned(letters, {other, volume("b"), volume("c")}), "E=b F=c G=a ");
    UdisksVolume again = other;
    again.driveDetected = 60'000'000; // plugged in anew
    EXPECT_EQ(assigned(letters, {again, volume("b"), volume("d")}), "E=b H=a I=d ");
}

TEST(DriveLetters, FormattedVolumeKeepsItsLetter) {
    DriveLetters letters;
    assigned(letters, {volume("a"), volume("b")});
    UdisksVolume formatted = volume("a");
    formatted.uuid = "fresh";
    formatted.driveDetected = 300; // reckoned anew
    EXPECT_EQ(assigned(letters, {formatted, volume("b")}), "D=a E=b ");
}
