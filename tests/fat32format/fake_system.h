// Systems and disks in memory, for the formatter.
#pragma once

#include "tools/fat32format/fat32.h"
#include "tools/fat32format/system.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <map>

namespace fat32format {

/// A disk in memory, of which only what is written is kept.
class MemoryDisk {
public:
    std::map<std::uint64_t, Bytes> sectors; ///< by offset, in bytes of the disk; those that are not all zeros
    int flushed = 0;
    bool tableRead = false;
    int typeSet = 0;   ///< how often
    Bytes whenTypeSet; ///< the first sector of the volume at that moment

    void write(std::uint64_t offset, std::span<const unsigned char> bytes, std::size_t size) {
        sectors.erase(sectors.lower_bound(offset), sectors.lower_bound(offset + bytes.size()));
        if (isZero(bytes)) return;
        for (; !bytes.empty(); offset += size, bytes = bytes.subspan(size)) {
            const auto sector = bytes.first(size);
            if (!isZero(sector)) sectors[offset] = Bytes(sector.begin(), sector.end());
        }
    }
    Bytes read(std::uint64_t offset, std::size_t size) const {
        Bytes bytes(size);
        const auto end = sectors.lower_bound(offset + size);
        for (auto one = sectors.lower_bound(offset); one != end; ++one)
            std::copy(one->second.begin(), one->second.end(),
                      bytes.begin() + static_cast<std::ptrdiff_t>(one->first - offset));
        return bytes;
    }

private:
    static bool isZero(std::span<const unsigned char> bytes) {
        return bytes[0] == 0 && std::memcmp(bytes.data(), bytes.data() + 1, bytes.size() - 1) == 0;
    }
};

/// A system on which nothing can be formatted but disks in memory.
class FakeSystem : public System {
public:
    std::map<char, Target> table = {{'C', {"/", {}}},
                                    {'E', {"/dev/sdb1", DiskIdentity{7, 500'107'862'016, "0123456789"}}}};
    std::string problemOfTable;
    std::map<std::string, Volume> volumes;
    std::optional<std::string> answer = "y";
    bool askerStays = true; ///< until the first write
    bool unmounts = true;
    bool mountsAgain = false;
    std::map<Access, Opened::Outcome> outcomes; ///< of opening; done where nothing else is said
    std::vector<Signature> contents;
    std::vector<Signature> besidePartitions;
    std::function<void()> onQuestion;
    std::function<void()> onUnmount;
    std::function<void()> onOpen; ///< as long as a password is asked for
    int failingCall = 0;          ///< the number of the call that fails; 0 for none
    int lostWrite = 0;            ///< the number of the write that changes nothing; 0 for none
    bool failingRead = false; ///< a failed look at the disk returns what cannot be read, instead of nothing

    MemoryDisk disk;
    std::vector<Access> opened;
    std::vector<std::string> unmounted;
    std::string output;
    int calls = 0;
    int writes = 0;

    /// Counts a call; whether it is the one that fails.
    bool fails() { return ++calls == failingCall; }

    std::string tableProblem() override { return fails() ? "The table cannot be read." : problemOfTable; }
    std::optional<Target> targetOf(char letter) override {
        const auto found = table.find(letter);
        if (fails() || found == table.end()) return std::nullopt;
        return found->second;
    }
    std::optional<Volume> inspect(const std::string& node) override {
        const bool failed = fails();
        const auto found = volumes.find(node);
        if (found == volumes.end() || (failed && !failingRead)) return std::nullopt;
        Volume volume = found->second;
        if (!failed) return volume;
        volume.systemUse = false; // what a table says that cannot be read
        volume.mounts.clear();
        volume.unreadable = "/proc/self/mountinfo";
        return volume;
    }
    std::string systemsOwn() override { return "Its own disks are not touched."; }
    Opened open(const Volume& volume, Access access) override;
    bool unmount(const Mount& mount) override {
        if (fails()) return false;
        unmounted.push_back(mount.place);
        if (onUnmount) onUnmount();
        if (!unmounts) return false;
        for (auto& [node, volume] : volumes)
            if (!mountsAgain) std::erase(volume.mounts, mount);
        return true;
    }
    std::uint32_t randomNumber() override { return 0x12345678; }
    void print(const std::string& text) override { output += text; }
    std::optional<std::string> readLine() override {
        if (onQuestion) onQuestion();
        if (fails()) return std::nullopt;
        return answer;
    }
    bool isAskerThere() override { return !fails() && askerStays; }
};

class FakeHeld : public HeldVolume {
public:
    FakeHeld(FakeSystem& system, Volume volume, bool writes)
        : system_(system), volume_(std::move(volume)), writes_(writes) {}

    std::optional<DiskIdentity> identity() override {
        const bool isThere = system_.volumes.contains(volume_.node);
        if (system_.fails() || !isThere) return std::nullopt;
        return system_.volumes.at(volume_.node).identity();
    }
    std::uint64_t bytes() override { return system_.fails() ? 0 : volume_.bytes; }
    std::optional<std::vector<Signature>> signatures() override { return unlessItFails(system_.contents); }
    std::optional<std::vector<Signature>> diskSignatures() override {
        return unlessItFails(system_.besidePartitions);
    }
    bool read(std::uint64_t offset, std::span<unsigned char> bytes) override {
        if (system_.fails()) return false;
        const Bytes found = system_.disk.read(volume_.start + offset, bytes.size());
        std::copy(found.begin(), found.end(), bytes.begin());
        return true;
    }
    bool write(std::uint64_t offset, std::span<const unsigned char> bytes) override {
        EXPECT_TRUE(writes_);
        EXPECT_LE(offset + bytes.size(), volume_.bytes);
        EXPECT_EQ(offset % volume_.sectorSize + bytes.size() % volume_.sectorSize, 0U);
        if (system_.fails()) return false;
        if (++system_.writes != system_.lostWrite)
            system_.disk.write(volume_.start + offset, bytes, volume_.sectorSize);
        return true;
    }
    bool flush() override {
        ++system_.disk.flushed;
        return !system_.fails();
    }
    void tableHasChanged() override { system_.disk.tableRead = true; }
    bool setPartitionType() override {
        if (system_.fails()) return false;
        ++system_.disk.typeSet;
        system_.disk.whenTypeSet = system_.disk.read(volume_.start, volume_.sectorSize);
        return true;
    }

private:
    std::optional<std::vector<Signature>> unlessItFails(const std::vector<Signature>& found) {
        if (system_.fails()) return std::nullopt;
        return found;
    }

    FakeSystem& system_;
    Volume volume_;
    bool writes_;
};

inline Opened FakeSystem::open(const Volume& volume, Access access) {
    opened.push_back(access);
    if (onOpen) onOpen();
    const auto outcome = outcomes.contains(access) ? outcomes.at(access) : Opened::Outcome::Done;
    if (outcome != Opened::Outcome::Done) return {outcome, nullptr, "as the test wants it"};
    if (fails()) return {Opened::Outcome::Failed, nullptr, "as the test wants it"};
    return {Opened::Outcome::Done, std::make_unique<FakeHeld>(*this, volume, access == Access::Alone), {}};
}

inline Volume usbPartition() {
    Volume volume;
    volume.node = "/dev/sdb1";
    volume.diskNode = "/dev/sdb";
    volume.deviceNumber = 17;
    volume.diskSequence = 7;
    volume.model = "ACME Mobile Disk";
    volume.serial = "0123456789";
    volume.diskBytes = 500'107'862'016;
    volume.start = 1'048'576;
    volume.bytes = 500'106'813'440;
    volume.isPartition = true;
    volume.diskHasPartitions = true;
    volume.onUsb = true;
    return volume;
}

inline Volume blankDisk() {
    Volume volume = usbPartition();
    volume.node = "/dev/sdb";
    volume.start = 0;
    volume.bytes = volume.diskBytes;
    volume.isPartition = false;
    volume.diskHasPartitions = false;
    return volume;
}

} // namespace fat32format
