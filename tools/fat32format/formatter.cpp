#include "tools/fat32format/formatter.h"

#include "tools/fat32format/fat32.h"
#include "tools/fat32format/size_text.h"
#include "tools/fat32format/volume_writer.h"

#include <algorithm>
#include <limits>

namespace fat32format {

namespace {

constexpr std::uint64_t sectorOfOption = 512;  // the unit of -cN
constexpr std::uint64_t alignment = 1'048'576; // of a partition, in bytes
constexpr std::uint64_t edge = 1'048'576;      // bytes at either end that other systems put their marks in
constexpr std::uint64_t largestCountOfTable = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint64_t bootRegions = 24; // sectors in front of every table of FAT32 and exFAT

/// Ends the run.
struct Refusal {
    Status status;
    std::string reason;
};

/// What is to become of a volume.
struct Plan {
    Fat32Layout layout;
    std::uint64_t base = 0; ///< where the file system begins, in bytes from the beginning of the volume
    Bytes table;            ///< the volume's first sector, when it gets a partition table
};

bool isMember(const Signature& signature) {
    return signature.isMember;
}

std::string joined(const std::vector<Signature>& signatures) {
    std::string text;
    for (const Signature& signature : signatures)
        text += (text.empty() ? "" : ", ") + printable(signature.name);
    return text;
}

class Formatter {
public:
    Formatter(System& system, const Options& options)
        : system_(system), options_(options), drive_({options.letter, ':'}) {}

    void run() {
        const Volume volume = find();
        check(volume);
        const Plan plan = planFor(volume);
        // Nobody can be locked out before the user's own mounts are gone, and they stay until the answer.
        const bool isMounted = !volume.mounts.empty();
        hold(volume, isMounted ? Access::Look : Access::Alone);
        const std::vector<Signature> contents = examine(volume);
        describe(volume, contents);
        ask();
        // The answer may have taken its time.
        const Volume now = findAgain(volume);
        if (isMounted) takeOver(now, contents);
        confirm(now);
        refuseWithoutAsker();
        write(plan);
        held_.reset();
        system_.print("100 percent completed.\nDone\n");
    }

private:
    Volume find() {
        const std::string problem = system_.tableProblem();
        if (!problem.empty()) throw Refusal{Status::UnknownLetter, problem};
        const auto target = system_.targetOf(options_.letter);
        if (!target) throw Refusal{Status::UnknownLetter, "There is no drive " + drive_ + "."};
        if (target->node == "/") refuseSystem();
        auto volume = system_.inspect(target->node);
        if (!volume) throw Refusal{Status::NoDisk, "Drive " + drive_ + " is no disk."};
        if (volume->bytes == 0 && volume->unreadable.empty())
            throw Refusal{Status::NoDisk, "Drive " + drive_ + " has no medium."};
        if (!target->disk)
            throw Refusal{Status::OtherDisk,
                          "The table of drives does not tell which disk drive " + drive_ + " is." +
                              (volume->diskSequence == 0 ? " Linux numbers disks from 5.15 on." : "")};
        if (*target->disk != volume->identity())
            throw Refusal{Status::OtherDisk, "Drive " + drive_ + " is another disk than it was known for."};
        return *volume;
    }

    [[noreturn]] void refuseSystem() {
        throw Refusal{Status::SystemVolume,
                      "The system uses the disk of drive " + drive_ + ". " + system_.systemsOwn()};
    }

    void check(const Volume& volume) {
        if (!volume.unreadable.empty())
            throw Refusal{Status::SystemVolume, "What uses the disk of drive " + drive_ +
                                                    " cannot be told: " + volume.unreadable +
                                                    " cannot be read."};
        if (volume.systemUse) refuseSystem();
        if (!volume.set.empty())
            throw Refusal{Status::MemberOfSet, "Drive " + drive_ + " belongs to a set of devices: " +
                                                   volume.set + ". It is not touched."};
        if (!volume.onUsb && !options_.anyBus)
            throw Refusal{Status::NotOnUsb, "The disk of drive " + drive_ +
                                                " is not connected by USB. The option --any-bus allows it."};
        if (volume.readOnly)
            throw Refusal{Status::WriteProtected, "Drive " + drive_ + " is write-protected."};
        if (!volume.isPartition && volume.diskHasPartitions)
            throw Refusal{Status::HasPartitions,
                          "Drive " + drive_ + " means a whole disk, which has partitions."};
    }

    /// A partition is formatted as a whole; a disk gets one partition, from the first mebibyte to its end, or
    /// to the end of what the table can tell.
    Plan planFor(const Volume& volume) {
        Plan plan;
        plan.base = baseOf(volume);
        Fat32Wish wish = wishFor(volume, options_.sectorsPerCluster);
        wish.serial = system_.randomNumber();
        wish.label = fatLabel(volume.label);
        wish.labelled = system_.localTime();
        const auto layout = fat32Layout(wish);
        if (!layout) refuseSize(volume);
        plan.layout = *layout;
        if (!volume.isPartition)
            plan.table = partitionTable(wish.sectorSize, wish.sectorsBefore,
                                        static_cast<std::uint32_t>(wish.sectors), system_.randomNumber());
        return plan;
    }

    /// Where its file system begins, in bytes from its own beginning.
    static std::uint64_t baseOf(const Volume& volume) { return volume.isPartition ? 0 : alignment; }

    /// Where it lies and how large it is. The number of sectors a cluster is that of -cN.
    static Fat32Wish wishFor(const Volume& volume, unsigned sectorsPerCluster) {
        const std::uint64_t base = baseOf(volume);
        const std::uint64_t size = std::max<std::uint64_t>(volume.sectorSize, sectorOfOption);
        const std::uint64_t start = (volume.start + base) / size;
        // What lies beyond the last sector that a table can name, no system would find.
        const std::uint64_t before = volume.isPartition ? 0 : start;
        Fat32Wish wish;
        wish.sectorSize = static_cast<std::uint32_t>(size);
        wish.sectors = std::min((std::max(volume.bytes, base) - base) / size, largestCountOfTable - before);
        wish.sectorsPerCluster =
            static_cast<std::uint32_t>(std::max<std::uint64_t>(1, sectorsPerCluster * sectorOfOption / size));
        // Only what starts a computer from the volume asks for it, and not beyond what 32 bits can count.
        wish.sectorsBefore = start <= largestCountOfTable ? static_cast<std::uint32_t>(start) : 0;
        return wish;
    }

    [[noreturn]] void refuseSize(const Volume& volume) {
        const unsigned wanted = options_.sectorsPerCluster;
        std::string fitting;
        bool isTooLarge = false;
        for (unsigned sectors = 1; sectors <= mostSectorsPerCluster; sectors *= 2) {
            if (!fat32Layout(wishFor(volume, sectors))) continue;
            fitting += (fitting.empty() ? "-c" : ", -c") + std::to_string(sectors);
            isTooLarge = isTooLarge || sectors > wanted;
        }
        if (fitting.empty())
            throw Refusal{Status::Failed, "Drive " + drive_ +
                                              " is too small for FAT32, or has sectors of a " +
                                              "length that FAT does not know. No size of clusters fits it."};
        throw Refusal{Status::Failed, "Drive " + drive_ + " is too " + (isTooLarge ? "large" : "small") +
                                          " for clusters of " + std::to_string(wanted) +
                                          (wanted == 1 ? " sector" : " sectors") + " (-c" +
                                          std::to_string(wanted) + "). What fits it: " + fitting + '.'};
    }

    void hold(const Volume& volume, Access access) {
        held_.reset();
        Opened opened = system_.open(volume, access);
        if (opened.outcome == Opened::Outcome::InUse)
            throw Refusal{Status::InUse, "Something else uses the disk of drive " + drive_ +
                                             ", perhaps where it cannot be seen from here. " + opened.reason};
        if (opened.outcome == Opened::Outcome::NotAllowed)
            throw Refusal{Status::NotAuthorised,
                          "The authorisation to write to the disk was refused. " + opened.reason};
        if (opened.outcome == Opened::Outcome::Encrypted)
            throw Refusal{Status::Encrypted, "Drive " + drive_ + " is encrypted with " + opened.reason +
                                                 ". Turn the encryption off first."};
        if (opened.outcome != Opened::Outcome::Done || !opened.volume)
            throw Refusal{Status::Failed, "Drive " + drive_ + " cannot be opened. " + opened.reason};
        held_ = std::move(opened.volume);
        confirm(volume);
    }

    /// That what is open is what has been looked at, whatever the names have come to mean in between.
    void confirm(const Volume& volume) {
        if (held_->identity() != volume.identity() || held_->bytes() != volume.bytes) refuseChanged();
    }

    [[noreturn]] void refuseChanged() {
        throw Refusal{Status::DiskChanged, "Drive " + drive_ + " is another disk by now."};
    }

    std::vector<Signature> examine(const Volume& volume) {
        const auto contents = held_->signatures();
        const auto beside = held_->diskSignatures();
        if (!contents || !beside)
            throw Refusal{Status::Failed, "What drive " + drive_ + " holds cannot be read."};
        for (const auto* found : {&*contents, &*beside}) {
            const auto member = std::find_if(found->begin(), found->end(), isMember);
            if (member == found->end()) continue;
            throw Refusal{Status::MemberOfSet, (volume.isPartition ? volume.node : volume.diskNode) +
                                                   " belongs to a set of devices: " + member->name +
                                                   ". It is not touched."};
        }
        return *contents;
    }

    void describe(const Volume& volume, const std::vector<Signature>& contents) {
        const auto orUnknown = [](const std::string& text) {
            return text.empty() ? "unknown" : printable(text);
        };
        const std::string what =
            volume.isPartition ? "partition " + volume.name() : "the whole of " + volume.name();
        std::string text =
            "Drive " + drive_ + " is " + what + ", " + sizeText(volume.bytes) + ", of this disk:\n";
        text += "  Model:  " + orUnknown(volume.model) + '\n';
        text += "  Serial: " + orUnknown(volume.shownSerial()) + '\n';
        text += "  Size:   " + sizeText(volume.diskBytes) + '\n';
        if (const std::string label = printable(volume.label); !label.empty())
            text += "  Label:  " + label + '\n';
        if (!contents.empty()) text += "enthält: " + joined(contents) + '\n';
        for (const Mount& mount : volume.mounts)
            text += mount.node + " is in use at " + printable(mount.place) + " and will be unmounted.\n";
        if (!volume.isPartition) text += "The disk gets a partition table with one partition.\n";
        system_.print(text + "Everything on it will be lost.\n");
    }

    void ask() {
        system_.print("Format drive " + drive_ + " (y/n)? ");
        const auto answer = system_.readLine();
        system_.print("\n");
        if (answer != "y") throw Refusal{Status::Declined, "Nothing has been changed."};
    }

    /// As long as nothing has been written, whoever has gone has called it off.
    void refuseWithoutAsker() {
        if (!system_.isAskerThere()) throw Refusal{Status::Declined, "Nothing has been changed."};
    }

    Volume findAgain(const Volume& before) {
        Volume now = find();
        if (!now.isSameAs(before)) refuseChanged();
        check(now);
        return now;
    }

    /// From the user's mounts. The volume may have been changed through them since it was described.
    void takeOver(const Volume& volume, const std::vector<Signature>& described) {
        held_.reset();
        unmount(volume);
        hold(volume, Access::Alone);
        if (examine(volume) != described) refuseChanged();
    }

    void unmount(const Volume& volume) {
        // The latest mount first: one may lie on top of another.
        const std::vector<Mount> mounts(volume.mounts.rbegin(), volume.mounts.rend());
        for (const Mount& mount : mounts) {
            system_.print("Unmounting " + printable(mount.place) + "...\n");
            if (!system_.unmount(mount))
                throw Refusal{Status::InUse, "Some program uses files in " + mount.place + "."};
        }
        if (!findAgain(volume).mounts.empty())
            throw Refusal{Status::InUse, "Drive " + drive_ + " has been mounted again."};
    }

    void write(const Plan& plan) {
        const Fat32Wish& wish = plan.layout.wish;
        if (!plan.table.empty()) system_.print("Writing a partition table...\n");
        system_.print("Formatting with FAT32, " + std::to_string(wish.sectorsPerCluster * wish.sectorSize) +
                      " bytes a cluster...\n");
        const std::uint64_t expected = Fat32Writer::clearedBytes(plan.layout) + plan.base + 2 * edge;
        VolumeWriter writer(*held_, expected, [this](std::uint64_t percent) {
            system_.print(std::to_string(percent) + " percent completed.\n");
        });
        Fat32Writer fileSystem(writer, plan.layout, plan.base);
        const bool isPrepared = clearOldMarks(writer, wish.sectorSize, plan.base) &&
                                fileSystem.writeTables() && writer.verifyAll();
        const bool isWhole = isPrepared && fileSystem.writeBoot() && writeTable(writer, plan.table);
        // Only now: a type that promises FAT32 where there is none would look right and not be.
        if (isWhole && (!plan.table.empty() || held_->setPartitionType())) return;
        if (isPrepared) takeBack(writer, fileSystem, plan.table);
        throw Refusal{Status::Failed, "The disk of drive " + drive_ +
                                          (isWhole ? " does not take the type of the new partition."
                                                   : " cannot be written to.")};
    }

    /// Where marks of an earlier use can be, which would contradict the new file system. Each step is on the
    /// medium before the next one: a file system without its first sector is none to any system. The copies
    /// of that sector, which a repair would go by, go before anything that they describe does: at the
    /// beginning those of FAT32 and exFAT, at the end those of NTFS and of a partition table.
    bool clearOldMarks(VolumeWriter& writer, std::uint64_t sectorSize, std::uint64_t base) {
        const std::uint64_t bytes = held_->bytes();
        const std::uint64_t copies = bootRegions * sectorSize;
        const std::uint64_t first = base + edge;
        return bytes >= first && writer.clear(0, sectorSize) && writer.clear(sectorSize, copies) &&
               writer.clear(std::max(first, bytes - edge), bytes) && writer.clear(copies, first);
    }

    bool writeTable(VolumeWriter& writer, const Bytes& table) {
        if (table.empty()) return true;
        if (!writer.store(0, table)) return false;
        held_->tableHasChanged();
        return true;
    }

    /// What could not be written or read back to its end must not pass for a file system. Whether the disk
    /// takes this is not asked: more cannot be done.
    static void takeBack(VolumeWriter& writer, Fat32Writer& fileSystem, const Bytes& table) {
        if (!table.empty()) writer.store(0, Bytes(table.size()));
        fileSystem.clearBoot();
    }

    System& system_;
    Options options_;
    std::string drive_; ///< "E:"
    std::unique_ptr<HeldVolume> held_;
};

} // namespace

bool Volume::isSameAs(const Volume& other) const {
    return node == other.node && deviceNumber == other.deviceNumber && diskSequence == other.diskSequence &&
           model == other.model && serial == other.serial && deviceSerial == other.deviceSerial &&
           diskBytes == other.diskBytes && start == other.start && bytes == other.bytes &&
           sectorSize == other.sectorSize && isPartition == other.isPartition;
}

std::tm System::localTime() {
    const std::time_t now = std::time(nullptr);
    const std::tm* local = std::localtime(&now); // NOLINT(concurrency-mt-unsafe): one thread
    return local == nullptr ? std::tm{} : *local;
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

} // namespace fat32format
