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
        if (volume->bytes == 0) throw Refusal{Status::NoDisk, "Drive " + drive_ + " has no medium."};
        if (!target->disk)
            throw Refusal{Status::OtherDisk,
                          "The table of drives does not tell which disk drive " + drive_ + " is." +
                              (volume->diskSequence == 0 ? " Linux numbers disks from 5.15 on." : "")};
        if (*target->disk != volume->identity())
            throw Refusal{Status::OtherDisk,
                          "Drive " + drive_ + " is another disk than the table of drives tells of."};
        return *volume;
    }

    [[noreturn]] void refuseSystem() {
        throw Refusal{Status::SystemVolume,
                      "The system uses the disk of drive " + drive_ +
                          ". What is mounted outside of /media, /run/media and /mnt, swap space, "
                          "and volume groups and encrypted volumes in use are not touched."};
    }

    void check(const Volume& volume) {
        if (!volume.unreadable.empty())
            throw Refusal{Status::SystemVolume, "What uses the disk of drive " + drive_ +
                                                    " cannot be told: " + volume.unreadable +
                                                    " cannot be read."};
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

    /// A partition is formatted as a whole; a disk gets one partition, from the first mebibyte to its end, or
    /// to the end of what the table can tell.
    Plan planFor(const Volume& volume) {
        Plan plan;
        const std::uint64_t size = std::max<std::uint64_t>(volume.sectorSize, sectorOfOption);
        plan.base = volume.isPartition ? 0 : alignment;
        if (volume.bytes <= plan.base) throw Refusal{Status::Failed, "The disk is too small."};
        Fat32Wish wish;
        wish.sectorSize = static_cast<std::uint32_t>(size);
        // What lies beyond the last sector that a table can name, no system would find.
        const std::uint64_t before = volume.isPartition ? 0 : plan.base / size;
        wish.sectors = std::min((volume.bytes - plan.base) / size, largestCountOfTable - before);
        wish.sectorsPerCluster = static_cast<std::uint32_t>(
            std::max<std::uint64_t>(1, options_.sectorsPerCluster * sectorOfOption / size));
        wish.sectorsBefore =
            static_cast<std::uint32_t>(std::min((volume.start + plan.base) / size, largestCountOfTable));
        wish.serial = system_.randomNumber();
        const auto layout = fat32Layout(wish);
        if (!layout)
            throw Refusal{Status::Failed, "The disk is too small or too large for clusters of this size."};
        plan.layout = *layout;
        if (!volume.isPartition)
            plan.table = partitionTable(wish.sectorSize, wish.sectorsBefore,
                                        static_cast<std::uint32_t>(wish.sectors), system_.randomNumber());
        return plan;
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
            volume.isPartition ? "partition " + volume.node : "the whole of " + volume.node;
        std::string text =
            "Drive " + drive_ + " is " + what + ", " + sizeText(volume.bytes) + ", of this disk:\n";
        text += "  Model:  " + orUnknown(volume.model) + '\n';
        text += "  Serial: " + orUnknown(volume.shownSerial()) + '\n';
        text += "  Size:   " + sizeText(volume.diskBytes) + '\n';
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
        const bool written = clearEdges(writer, plan.base) && fileSystem.writeTables() && held_->flush() &&
                             fileSystem.writeBoot() && held_->flush() && writer.verifyAll() &&
                             writeTable(writer, plan.table);
        if (!written) throw Refusal{Status::Failed, "The disk of drive " + drive_ + " cannot be written to."};
    }

    /// Where marks of an earlier use can be, which would contradict the new file system.
    bool clearEdges(VolumeWriter& writer, std::uint64_t base) {
        const std::uint64_t bytes = held_->bytes();
        const std::uint64_t first = std::min(base + edge, bytes);
        return bytes >= edge && writer.clear(0, first) && writer.clear(std::max(first, bytes - edge), bytes);
    }

    bool writeTable(VolumeWriter& writer, const Bytes& table) {
        if (table.empty()) return true;
        if (!writer.put(0, table) || !held_->flush() || !writer.verify(0, table)) return false;
        held_->tableHasChanged();
        return true;
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
