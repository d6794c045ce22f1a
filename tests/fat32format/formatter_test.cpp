// What is said and asked, and which drives are left alone.
#include "tests/fat32format/formatter_fixture.h"

using namespace fat32format;

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

TEST_F(Fat32Format, LabelIsToldAndKept) {
    partition().label = "Backup";
    EXPECT_EQ(run(), Status::Done);
    EXPECT_TRUE(said("  Size:   500.1 GB\n  Label:  Backup\nEverything")) << system.output;
    const Bytes boot = system.disk.read(1'048'576, 512);
    EXPECT_EQ(std::string(boot.begin() + 71, boot.begin() + 82), "BACKUP     ");
    const Bytes root = expectRootSector(boot);
    EXPECT_EQ(std::string(root.begin(), root.begin() + 12), "BACKUP     \b");
    EXPECT_NE(root[24], 0) << "the day";
}

TEST_F(Fat32Format, LabelThatFatCannotKeep) {
    partition().label = "Fotos \xC3\xA4lter als 2020\nDone";
    EXPECT_EQ(run(), Status::Done);
    EXPECT_TRUE(said("\n  Label:  Fotos \xC3\xA4lter als 2020 DONE\n")) << system.output;
    const Bytes boot = expectFileSystem(1'048'576);
    EXPECT_EQ(std::string(boot.begin() + 71, boot.begin() + 82), "NO NAME    ");
}

TEST_F(Fat32Format, SerialThatOnlyTheDeviceTellsIsShown) {
    partition().serial.clear();
    partition().deviceSerial = "4711";
    tellTheTable();
    EXPECT_EQ(system.table['E'].disk->serial, "") << "what the table tells is compared, and nothing else";
    EXPECT_EQ(run(), Status::Done);
    EXPECT_TRUE(said("Serial: 4711\n")) << system.output;
}

TEST_F(Fat32Format, NameThatPeopleKnowIsShown) {
    partition().shownNode = "1 of disk 2";
    EXPECT_EQ(run(), Status::Done);
    EXPECT_TRUE(said("Drive E: is partition 1 of disk 2, 500.1 GB")) << system.output;
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

TEST_F(Fat32Format, UseThatCannotBeTold) {
    partition().unreadable = "/proc/self/mountinfo";
    expectRefusal(Status::SystemVolume, "cannot be told: /proc/self/mountinfo cannot be read.");
}

TEST_F(Fat32Format, WhatCannotBeToldIsNoMissingMedium) {
    partition().bytes = 0;
    partition().unreadable = "its place on the disk";
    expectRefusal(Status::SystemVolume, "cannot be told: its place on the disk cannot be read.");
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

TEST_F(Fat32Format, NobodyWaitsForWhatWasAgreed) {
    system.askerStays = false;
    expectRefusal(Status::Declined, "Nothing has been changed.");
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

TEST_F(Fat32Format, VolumeOnSeveralDisks) {
    partition().set = "a volume on several disks";
    partition().onUsb = false;
    expectRefusal(Status::MemberOfSet,
                  "Drive E: belongs to a set of devices: a volume on several disks. It is");
}

TEST_F(Fat32Format, EncryptedVolume) {
    system.outcomes[Access::Alone] = Opened::Outcome::Encrypted;
    expectRefusal(Status::Encrypted, "Drive E: is encrypted with as the test wants it. Turn");
    EXPECT_FALSE(said("(y/n)"));
}
