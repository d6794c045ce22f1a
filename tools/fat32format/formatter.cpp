#include "tools/fat32format/formatter.h"

#include "tools/fat32format/size_text.h"

#include <algorithm>
#include <limits>

namespace fat32format {

namespace {

constexpr std::uint64_t sectorOfOption = 512;  // the unit of -cN
constexpr std::uint64_t alignment = 1'048'576; // of a partition, in bytes
constexpr std::uint64_t largestCountOfTable = std::numeric_limits<std::uint32_t>::max();
constexpr int pkexecDismissed = 126;
constexpr int pkexecRefused = 127;

/// Ends the run.
struct Refusal {
    Status status;
    std::string reason;
};

class Formatter {
public:
    Formatter(System& system, const Options& options)
        : system_(system), options_(options), drive_({options.letter, ':'}) {}

    void run() {
        const Volume volume = find();
        check(volume);
        findTools(volume);
        describe(volume);
        ask();
        // The answer may have taken its time.
        const Volume now = findAgain(volume);
        unmount(now);
        makeFileSystem(now.isPartition ? now : partition(now));
        system_.settle();
        system_.print("Done\n");
    }

private:
    Volume find() {
        const std::string problem = system_.tableProblem();
        if (!problem.empty()) throw Refusal{Status::UnknownLetter, problem};
        const auto target = system_.targetOf(options_.letter);
        if (!target) throw Refusal{Status::UnknownLetter, "There is no drive " + drive_ + "."};
        if (*target == "/") refuseSystem();
        auto volume = system_.inspect(*target);
        if (!volume) throw Refusal{Status::NoDisk, "Drive " + drive_ + " is no disk."};
        if (volume->bytes == 0) throw Refusal{Status::NoDisk, "Drive " + drive_ + " has no medium."};
        return *volume;
    }

    [[noreturn]] void refuseSystem() {
        throw Refusal{Status::SystemVolume,
                      "The system uses the disk of drive " + drive_ +
                          ". What is mounted outside of /media, /run/media and /mnt, swap space, "
                          "and volume groups and encrypted volumes in use are not touched."};
    }

    void check(const Volume& volume) {
        if (volume.systemUse) refuseSystem();
        if (!volume.onUsb && !options_.anyBus)
            throw Refusal{Status::NotOnUsb, "The disk of drive " + drive_ +
                                                " is not connected by USB. The option --any-bus allows it."};
        if (volume.readOnly)
            throw Refusal{Status::WriteProtected, "Drive " + drive_ + " is write-protected."};
        if (!volume.isPartition && volume.diskHasPartitions)
            throw Refusal{Status::HasPartitions,
                          "Drive " + drive_ + " means a whole disk, which has partitions."};
    }

    void findTools(const Volume& volume) {
        makeTool_ = tool("mkfs.fat", "dosfstools");
        if (!volume.isPartition) partitionTool_ = tool("sfdisk", "fdisk");
        if (system_.isRoot()) return;
        const auto pkexec = system_.findTool("pkexec");
        if (!pkexec)
            throw Refusal{Status::NotAuthorised,
                          "Only root may write to the disk, and pkexec is not installed."};
        authorisation_ = {*pkexec, "--disable-internal-agent"};
    }

    std::string tool(const std::string& name, const std::string& package) {
        const auto path = system_.findTool(name);
        if (!path)
            throw Refusal{Status::MissingTool,
                          name + " is not installed; the package is called " + package + "."};
        return *path;
    }

    void describe(const Volume& volume) {
        const auto orUnknown = [](const std::string& text) {
            return text.empty() ? "unknown" : printable(text);
        };
        const std::string what =
            volume.isPartition ? "partition " + volume.node : "the whole of " + volume.node;
        std::string text =
            "Drive " + drive_ + " is " + what + ", " + sizeText(volume.bytes) + ", of this disk:\n";
        text += "  Model:  " + orUnknown(volume.model) + '\n';
        text += "  Serial: " + orUnknown(volume.serial) + '\n';
        text += "  Size:   " + sizeText(volume.diskBytes) + '\n';
        for (const std::string& place : volume.mounts)
            text += "It is in use at " + printable(place) + " and will be unmounted.\n";
        if (!volume.isPartition) text += "The disk gets a partition table with one partition.\n";
        system_.print(text + "Everything on it will be lost.\n");
    }

    void ask() {
        system_.print("Format drive " + drive_ + " (y/n)? ");
        const auto answer = system_.readLine();
        system_.print("\n");
        if (answer != "y") throw Refusal{Status::Declined, "Nothing has been changed."};
    }

    Volume findAgain(const Volume& before) {
        Volume now = find();
        if (!now.isSameAs(before))
            throw Refusal{Status::DiskChanged, "Drive " + drive_ + " is another disk by now."};
        check(now);
        return now;
    }

    void unmount(const Volume& volume) {
        // The latest mount first: one may lie on top of another.
        const std::vector<std::string> places(volume.mounts.rbegin(), volume.mounts.rend());
        for (const std::string& place : places) {
            system_.print("Unmounting " + printable(place) + "...\n");
            if (!system_.unmount(place))
                throw Refusal{Status::InUse, "Some program uses files in " + place + "."};
        }
        if (!findAgain(volume).mounts.empty())
            throw Refusal{Status::InUse, "Drive " + drive_ + " has been mounted again."};
    }

    /// One partition of type FAT32 from the first mebibyte to the end of the disk, or to the end of what the
    /// table can tell. Returns the disk itself when the kernel does not take notice of the partition.
    Volume partition(const Volume& disk) {
        system_.print("Writing a partition table...\n");
        const std::uint64_t start = alignment / disk.sectorSize;
        const std::uint64_t sectors = disk.bytes / disk.sectorSize;
        if (sectors <= start) throw Refusal{Status::Failed, "The disk is too small."};
        const std::uint64_t size = std::min(sectors - start, largestCountOfTable);
        const std::string table =
            "label: dos\nstart=" + std::to_string(start) + ", size=" + std::to_string(size) + ", type=c\n";
        runTool(
            {partitionTool_, "--quiet", "--wipe", "always", "--wipe-partitions", "always", disk.stableNode},
            table, [] {});
        if (const auto found = system_.firstPartitionOf(disk)) return *found;
        Volume inside = disk;
        inside.bytes = size * disk.sectorSize;
        return inside;
    }

    /// Of a whole disk: the file system of its first partition. The kernel may have that one already, hence
    /// -I, which lets mkfs.fat write through the disk all the same.
    void makeFileSystem(const Volume& volume) {
        const std::uint64_t clusterBytes = options_.sectorsPerCluster * sectorOfOption;
        const std::uint64_t perCluster = std::max<std::uint64_t>(1, clusterBytes / volume.sectorSize);
        system_.print("Formatting with FAT32, " + std::to_string(perCluster * volume.sectorSize) +
                      " bytes a cluster...\n");
        std::vector<std::string> command = {
            makeTool_, "-F", "32", "-s", std::to_string(perCluster), "-S", std::to_string(volume.sectorSize)};
        if (!volume.isPartition) {
            const std::string start = std::to_string(alignment / volume.sectorSize);
            command.insert(command.end(), {"--offset=" + start, "-h", start, "-I"});
            if (knowsTableOption()) command.emplace_back("--mbr=n");
        }
        command.push_back(volume.stableNode);
        if (!volume.isPartition) command.push_back(std::to_string(volume.bytes / 1024));
        expected_ = bytesToWrite(volume.bytes, perCluster * volume.sectorSize);
        written_ = system_.bytesWritten(volume);
        percent_ = 0;
        runTool(command, {}, [&] { showProgress(volume); });
        system_.print("100 percent completed.\n");
    }

    /// Since version 4.2, mkfs.fat may write a partition table of its own onto a whole disk.
    bool knowsTableOption() {
        return system_.run({makeTool_, "--help"}, {}, [] {}).output.find("--mbr") != std::string::npos;
    }

    void showProgress(const Volume& volume) {
        constexpr std::uint64_t step = 10;
        const std::uint64_t now = system_.bytesWritten(volume);
        if (now < written_) return;
        const std::uint64_t percent =
            std::min<std::uint64_t>((now - written_) * 100 / expected_, 99) / step * step;
        if (percent <= percent_) return;
        percent_ = percent;
        system_.print(std::to_string(percent) + " percent completed.\n");
    }

    void runTool(const std::vector<std::string>& command, const std::string& input,
                 const std::function<void()>& meanwhile) {
        std::vector<std::string> whole = authorisation_;
        whole.insert(whole.end(), command.begin(), command.end());
        const CommandResult result = system_.run(whole, input, meanwhile);
        if (result.status == 0) return;
        if (!authorisation_.empty() && (result.status == pkexecDismissed || result.status == pkexecRefused))
            throw Refusal{Status::NotAuthorised, "The authorisation to write to the disk was refused."};
        throw Refusal{Status::Failed, command.front() + " failed: " + result.output};
    }

    System& system_;
    Options options_;
    std::string drive_; ///< "E:"
    std::string makeTool_;
    std::string partitionTool_;
    std::vector<std::string> authorisation_; ///< what to put in front of a command that writes
    std::uint64_t expected_ = 1;             ///< bytes
    std::uint64_t written_ = 0;              ///< bytes, before the formatting
    std::uint64_t percent_ = 0;
};

} // namespace

bool Volume::isSameAs(const Volume& other) const {
    return node == other.node && deviceNumber == other.deviceNumber && diskSequence == other.diskSequence &&
           model == other.model && serial == other.serial && diskBytes == other.diskBytes &&
           bytes == other.bytes && isPartition == other.isPartition;
}

bool Volume::isReadyPartitionOf(const Volume& disk) const {
    const bool isNameLasting = stableNode != node || disk.stableNode == disk.node;
    return isPartition && diskNode == disk.diskNode && diskSequence == disk.diskSequence && isNameLasting;
}

Status format(System& system, const Options& options) {
    try {
        Formatter(system, options).run();
        return Status::Done;
    } catch (const Refusal& refusal) {
        system.print(printable(refusal.reason) + '\n');
        return refusal.status;
    }
}

std::string printable(std::string text) {
    for (char& c : text) {
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7F') c = ' ';
    }
    text.erase(text.find_last_not_of(' ') + 1);
    const std::string success = "Done";
    for (std::size_t at = text.find(success); at != std::string::npos; at = text.find(success))
        text.replace(at, success.size(), "DONE");
    return text;
}

std::uint64_t bytesToWrite(std::uint64_t volumeBytes, std::uint64_t clusterBytes) {
    constexpr std::uint64_t tables = 2;
    constexpr std::uint64_t entry = 4;
    return std::max<std::uint64_t>(1, volumeBytes / clusterBytes * entry * tables);
}

} // namespace fat32format
