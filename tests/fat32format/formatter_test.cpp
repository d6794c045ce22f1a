#include "tools/fat32format/formatter.h"

#include "tools/fat32format/size_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

using namespace fat32format;
using Command = std::vector<std::string>;

namespace {

/// A system on which nothing can be formatted.
class FakeSystem : public System {
public:
    std::map<char, std::string> table = {{'C', "/"}, {'E', "/dev/sdb1"}};
    std::string problemOfTable;
    std::map<std::string, Volume> volumes;
    std::map<std::string, std::string> tools = {
        {"mkfs.fat", "/usr/sbin/mkfs.fat"}, {"sfdisk", "/usr/sbin/sfdisk"}, {"pkexec", "/usr/bin/pkexec"}};
    std::optional<std::string> answer = "y";
    std::optional<Volume> newPartition;
    bool root = true;
    bool unmounts = true;
    bool mountsAgain = false;
    std::map<std::string, CommandResult> results; ///< by the name of the tool
    std::vector<std::uint64_t> written;           ///< what the looks at the disk find, one after the other
    std::function<void()> onQuestion;

    std::vector<Command> commands;
    std::string input;
    std::vector<std::string> unmounted;
    std::string output;
    bool settled = false;

    std::string tableProblem() override { return problemOfTable; }
    std::optional<std::string> targetOf(char letter) override {
        const auto found = table.find(letter);
        return found == table.end() ? std::nullopt : std::optional(found->second);
    }
    std::optional<Volume> inspect(const std::string& node) override {
        const auto found = volumes.find(node);
        return found == volumes.end() ? std::nullopt : std::optional(found->second);
    }
    std::optional<Volume> firstPartitionOf(const Volume&) override { return newPartition; }
    std::uint64_t bytesWritten(const Volume&) override {
        if (written.empty()) return 0;
        const std::uint64_t value = written.front();
        if (written.size() > 1) written.erase(written.begin());
        return value;
    }
    bool isRoot() override { return root; }
    std::optional<std::string> findTool(const std::string& name) override {
        const auto found = tools.find(name);
        return found == tools.end() ? std::nullopt : std::optional(found->second);
    }
    CommandResult run(const Command& command, const std::string& text,
                      const std::function<void()>& meanwhile) override {
        commands.push_back(command);
        input += text;
        for (int look = 0; look < 5; ++look)
            meanwhile();
        for (const auto& [tool, result] : results)
            if (std::find(command.begin(), command.end(), tool) != command.end()) return result;
        return {0, "output of the tool"};
    }
    bool unmount(const std::string& place) override {
        unmounted.push_back(place);
        if (!unmounts) return false;
        for (auto& [node, volume] : volumes)
            if (!mountsAgain) std::erase(volume.mounts, place);
        return true;
    }
    void settle() override { settled = true; }
    void print(const std::string& text) override { output += text; }
    std::optional<std::string> readLine() override {
        if (onQuestion) onQuestion();
        return answer;
    }
};

Volume usbPartition() {
    Volume volume;
    volume.node = "/dev/sdb1";
    volume.stableNode = "/dev/disk/by-diskseq/7-part1";
    volume.diskNode = "/dev/sdb";
    volume.deviceNumber = 17;
    volume.diskSequence = 7;
    volume.model = "ACME Mobile Disk";
    volume.serial = "0123456789";
    volume.diskBytes = 500'107'862'016;
    volume.bytes = 500'106'813'440;
    volume.isPartition = true;
    volume.diskHasPartitions = true;
    volume.onUsb = true;
    return volume;
}

Volume blankDisk() {
    Volume volume = usbPartition();
    volume.node = "/dev/sdb";
    volume.stableNode = "/dev/disk/by-diskseq/7";
    volume.bytes = volume.diskBytes;
    volume.isPartition = false;
    volume.diskHasPartitions = false;
    return volume;
}

class Fat32Format : public testing::Test {
protected:
    Fat32Format() { system.volumes["/dev/sdb1"] = usbPartition(); }

    Volume& partition() { return system.volumes["/dev/sdb1"]; }

    Volume& useBlankDisk() {
        system.table['E'] = "/dev/sdb";
        return system.volumes["/dev/sdb"] = blankDisk();
    }

    Status run() { return format(system, options); }

    bool said(const std::string& text) const { return system.output.find(text) != std::string::npos; }

    /// It says so, does not say it has worked, and has not touched the disk.
    void expectRefusal(Status status, const std::string& reason) {
        EXPECT_EQ(run(), status);
        EXPECT_TRUE(said(reason)) << system.output;
        EXPECT_FALSE(said("Done")) << system.output;
        EXPECT_TRUE(system.commands.empty());
    }

    FakeSystem system;
    Options options{'E', 64, false};
};

} // namespace

TEST_F(Fat32Format, FormatsAPartition) {
    EXPECT_EQ(run(), Status::Done);
    EXPECT_EQ(system.commands, std::vector<Command>{Command({"/usr/sbin/mkfs.fat", "-F", "32", "-s", "64",
                                                             "-S", "512", "/dev/disk/by-diskseq/7-part1"})});
    EXPECT_TRUE(system.settled);
    EXPECT_TRUE(system.output.ends_with("\nDone\n")) << system.output;
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
    EXPECT_EQ(run(), Status::Done);
    EXPECT_TRUE(said("Model:  unknown\n  Serial: unknown\n"));
}

TEST_F(Fat32Format, NameOfADiskCannotPassForSuccess) {
    partition().model = "Done\nDone \x1B[2J";
    system.answer = "n";
    expectRefusal(Status::Declined, "Model:  DONE DONE  [2J\n");
}

TEST_F(Fat32Format, ShowsProgress) {
    const std::uint64_t all = bytesToWrite(partition().bytes, 32768);
    system.written = {1000, 1000, 1000 + all / 4, 1000 + all / 4, 1000 + all / 2, 1000 + all * 2};
    run();
    EXPECT_TRUE(said(
        "\n20 percent completed.\n50 percent completed.\n90 percent completed.\n100 percent completed.\n"))
        << system.output;
}

TEST_F(Fat32Format, ClusterSizeIsInSectorsOf512BytesWhateverTheDiskHas) {
    partition().sectorSize = 4096;
    EXPECT_EQ(run(), Status::Done);
    EXPECT_EQ(system.commands.at(0), Command({"/usr/sbin/mkfs.fat", "-F", "32", "-s", "8", "-S", "4096",
                                              "/dev/disk/by-diskseq/7-part1"}));
    system.commands.clear();
    options.sectorsPerCluster = 1;
    EXPECT_EQ(run(), Status::Done);
    EXPECT_EQ(system.commands.at(0).at(4), "1");
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
    system.table['E'] = "/home/anna/stick";
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

TEST_F(Fat32Format, MissingTools) {
    system.tools.erase("sfdisk");
    EXPECT_EQ(run(), Status::Done) << "a partition does not need it";
    system.commands.clear();
    system.output.clear();
    system.tools.erase("mkfs.fat");
    expectRefusal(Status::MissingTool, "mkfs.fat is not installed");
    EXPECT_FALSE(said("(y/n)")) << "nobody is asked in vain";
}

TEST_F(Fat32Format, MissingToolForABlankDisk) {
    useBlankDisk();
    system.tools.erase("sfdisk");
    expectRefusal(Status::MissingTool, "sfdisk is not installed");
}

TEST_F(Fat32Format, AnythingButYesIsNo) {
    for (const auto& answer :
         std::vector<std::optional<std::string>>{std::nullopt, "", "n", "Y", "yes", " y", "y "}) {
        system.answer = answer;
        expectRefusal(Status::Declined, "Nothing has been changed.");
    }
    EXPECT_TRUE(system.unmounted.empty());
}

TEST_F(Fat32Format, UserIsAuthorised) {
    system.root = false;
    EXPECT_EQ(run(), Status::Done);
    EXPECT_EQ(system.commands.at(0),
              Command({"/usr/bin/pkexec", "--disable-internal-agent", "/usr/sbin/mkfs.fat", "-F", "32", "-s",
                       "64", "-S", "512", "/dev/disk/by-diskseq/7-part1"}));
}

TEST_F(Fat32Format, RefusedAuthorisation) {
    system.root = false;
    for (const int status : {126, 127}) {
        system.results["/usr/bin/pkexec"] = {status, "Request dismissed"};
        EXPECT_EQ(run(), Status::NotAuthorised);
        EXPECT_TRUE(said("authorisation"));
        EXPECT_FALSE(said("Done"));
    }
}

TEST_F(Fat32Format, NobodyToAskForAuthorisation) {
    system.root = false;
    system.tools.erase("pkexec");
    expectRefusal(Status::NotAuthorised, "pkexec is not installed");
}

TEST_F(Fat32Format, ToolThatFails) {
    system.results["/usr/sbin/mkfs.fat"] = {1, "mkfs.fat: Done\nwith it"};
    EXPECT_EQ(run(), Status::Failed);
    EXPECT_TRUE(said("/usr/sbin/mkfs.fat failed: mkfs.fat: DONE with it\n")) << system.output;
    EXPECT_FALSE(said("Done"));
}

TEST_F(Fat32Format, ToolThatCannotBeStarted) {
    system.results["/usr/sbin/mkfs.fat"] = {-1, ""};
    EXPECT_EQ(run(), Status::Failed);
}

// Mounts.

TEST_F(Fat32Format, UnmountsWhatTheUserHasMounted) {
    partition().mounts = {"/media/anna/DISK", "/mnt/disk"};
    EXPECT_EQ(run(), Status::Done);
    EXPECT_EQ(system.unmounted, (std::vector<std::string>{"/mnt/disk", "/media/anna/DISK"}));
    EXPECT_TRUE(said("It is in use at /media/anna/DISK and will be unmounted.\n"));
}

TEST_F(Fat32Format, MountThatIsBusy) {
    partition().mounts = {"/media/anna/DISK"};
    system.unmounts = false;
    expectRefusal(Status::InUse, "Some program uses files in /media/anna/DISK.");
}

TEST_F(Fat32Format, MountThatComesBack) {
    partition().mounts = {"/media/anna/DISK"};
    system.mountsAgain = true;
    expectRefusal(Status::InUse, "mounted again");
}

// What changes while the user thinks.

TEST_F(Fat32Format, AnotherDiskBehindTheLetter) {
    system.onQuestion = [this] { partition().serial = "another"; };
    expectRefusal(Status::DiskChanged, "another disk");
}

TEST_F(Fat32Format, SameDiskPluggedInAgain) {
    system.onQuestion = [this] { partition().diskSequence = 8; };
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
    system.newPartition = usbPartition();
    EXPECT_EQ(run(), Status::Done);
    ASSERT_EQ(system.commands.size(), 2U);
    EXPECT_EQ(system.commands[0], Command({"/usr/sbin/sfdisk", "--quiet", "--wipe", "always",
                                           "--wipe-partitions", "always", "/dev/disk/by-diskseq/7"}));
    EXPECT_EQ(system.input, "label: dos\nstart=2048, size=976771120, type=c\n");
    EXPECT_EQ(system.commands[1].back(), "/dev/disk/by-diskseq/7-part1");
    EXPECT_TRUE(said("Drive E: is the whole of /dev/sdb, 500.1 GB"));
    EXPECT_TRUE(said("The disk gets a partition table with one partition.\n"));
}

TEST_F(Fat32Format, PartitionThatTheKernelDoesNotSeeIsWrittenThroughTheDisk) {
    useBlankDisk();
    EXPECT_EQ(run(), Status::Done);
    EXPECT_EQ(system.commands.at(1), Command({"/usr/sbin/mkfs.fat", "--help"}));
    EXPECT_EQ(system.commands.at(2),
              Command({"/usr/sbin/mkfs.fat", "-F", "32", "-s", "64", "-S", "512", "--offset=2048", "-h",
                       "2048", "-I", "/dev/disk/by-diskseq/7", "488385560"}));
}

TEST_F(Fat32Format, ToolThatCouldWriteATableOfItsOwnDoesNot) {
    useBlankDisk();
    system.results["--help"] = {0, "Options:\n  --mbr[=y|n|a]   Fill (fake) MBR table\n"};
    EXPECT_EQ(run(), Status::Done);
    EXPECT_EQ(system.commands.at(2),
              Command({"/usr/sbin/mkfs.fat", "-F", "32", "-s", "64", "-S", "512", "--offset=2048", "-h",
                       "2048", "-I", "--mbr=n", "/dev/disk/by-diskseq/7", "488385560"}));
}

TEST_F(Fat32Format, PartitionIsReadyWhenItsNameIsAsLastingAsTheDisks) {
    Volume disk = blankDisk();
    Volume first = usbPartition();
    EXPECT_TRUE(first.isReadyPartitionOf(disk));
    first.stableNode = first.node; // the kernel is ahead of udev
    EXPECT_FALSE(first.isReadyPartitionOf(disk));
    disk.stableNode = disk.node;
    EXPECT_TRUE(first.isReadyPartitionOf(disk)) << "where udev gives no such names";
}

TEST_F(Fat32Format, PartitionOfAnotherDiskIsNotReady) {
    const std::vector<std::function<void(Volume&)>> changes = {
        [](Volume& v) { v.diskNode = "/dev/sdc"; },
        [](Volume& v) { v.diskSequence = 8; },
        [](Volume& v) { v.isPartition = false; },
    };
    for (std::size_t i = 0; i < changes.size(); ++i) {
        Volume other = usbPartition();
        changes[i](other);
        EXPECT_FALSE(other.isReadyPartitionOf(blankDisk())) << i;
    }
}

TEST_F(Fat32Format, PartitionIsNoLargerThanTheTableCanTell) {
    Volume& disk = useBlankDisk();
    disk.bytes = disk.diskBytes = 4'000'000'000'000;
    EXPECT_EQ(run(), Status::Done);
    EXPECT_EQ(system.input, "label: dos\nstart=2048, size=4294967295, type=c\n");
}

TEST_F(Fat32Format, TableCountsInTheDisksOwnSectors) {
    Volume& disk = useBlankDisk();
    disk.sectorSize = 4096;
    disk.bytes = disk.diskBytes = 4096ULL * 1'000'000;
    EXPECT_EQ(run(), Status::Done);
    EXPECT_EQ(system.input, "label: dos\nstart=256, size=999744, type=c\n");
}

TEST_F(Fat32Format, DiskTooSmallForAPartition) {
    Volume& disk = useBlankDisk();
    disk.bytes = disk.diskBytes = 1'048'576;
    expectRefusal(Status::Failed, "too small");
}

TEST_F(Fat32Format, WholeDiskWithPartitionsIsLeftAlone) {
    useBlankDisk().diskHasPartitions = true;
    expectRefusal(Status::HasPartitions, "has partitions");
}

TEST_F(Fat32Format, FailedTableEndsTheRun) {
    useBlankDisk();
    system.results["/usr/sbin/sfdisk"] = {1, "sfdisk: cannot open"};
    EXPECT_EQ(run(), Status::Failed);
    EXPECT_EQ(system.commands.size(), 1U);
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
