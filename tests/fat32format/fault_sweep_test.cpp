// Every call of the formatter fails once. Whatever fails, a disk in use stays as it is, and nothing is called
// done that is not.
#include "tools/fat32format/formatter.h"

#include "tests/fat32format/fake_system.h"

#include <gtest/gtest.h>

using namespace fat32format;

namespace {

constexpr Options options{'E', 64, false};

/// A partition, or a whole disk, of 3 GB.
void plug(FakeSystem& system, bool isPartition) {
    Volume volume = isPartition ? usbPartition() : blankDisk();
    volume.diskBytes = 3'221'225'472;
    volume.bytes = volume.diskBytes - volume.start;
    system.volumes[volume.node] = volume;
    system.table['E'] = {volume.node, volume.identity()};
}

/// What a run without a fault leaves.
MemoryDisk formatted(bool isPartition, bool isMounted) {
    FakeSystem system;
    plug(system, isPartition);
    if (isMounted) system.volumes.begin()->second.mounts = {{"/dev/sdb1", "/media/anna/DISK"}};
    EXPECT_EQ(format(system, options), Status::Done);
    return system.disk;
}

/// Neither a file system nor a copy of its first sector, nor a partition table; all of them end alike.
void expectNothingThatLooksRight(const MemoryDisk& disk, const std::string& fault) {
    constexpr std::uint64_t base = 1'048'576;
    for (const std::uint64_t place : {std::uint64_t{0}, base, base + std::uint64_t{copyPlace} * 512}) {
        const Bytes sector = disk.read(place, 512);
        EXPECT_FALSE(sector[510] == 0x55 && sector[511] == 0xAA) << fault << ", at " << place;
    }
}

struct Case {
    bool isPartition;
    bool isMounted;   ///< by the user
    bool failingRead; ///< what cannot be read is named, else there is no answer at all
};

/// Returns the number of calls of a run without a fault.
int sweepFree(const Case& one) {
    const MemoryDisk good = formatted(one.isPartition, one.isMounted);
    for (int call = 1;; ++call) {
        FakeSystem system;
        plug(system, one.isPartition);
        if (one.isMounted) system.volumes.begin()->second.mounts = {{"/dev/sdb1", "/media/anna/DISK"}};
        system.failingCall = call;
        system.failingRead = one.failingRead;
        const Status status = format(system, options);
        const bool saysDone = system.output.find("Done") != std::string::npos;
        EXPECT_EQ(status == Status::Done, saysDone) << call;
        EXPECT_TRUE(!saysDone || system.disk.sectors == good.sectors) << call;
        if (!saysDone) expectNothingThatLooksRight(system.disk, "the fault of call " + std::to_string(call));
        if (system.calls < call) return call - 1;
        EXPECT_NE(status, Status::Done) << "the fault of call " << call << " has been overlooked";
    }
}

/// A disk that the system has mounted, where every look at it but one says so.
void sweepMountedBySystem(bool isPartition, bool failingRead) {
    for (int call = 1;; ++call) {
        FakeSystem system;
        plug(system, isPartition);
        system.volumes.begin()->second.systemUse = true;
        system.failingCall = call;
        system.failingRead = failingRead;
        EXPECT_NE(format(system, options), Status::Done);
        EXPECT_TRUE(system.disk.sectors.empty());
        EXPECT_TRUE(system.opened.empty());
        if (system.calls < call) return;
    }
}

/// What a disk of use has wherever something is written to it.
void fillWithOldData(FakeSystem& system) {
    const Volume& volume = system.volumes.begin()->second;
    const Bytes old(std::size_t{4} * 1'048'576, 0xA5);
    system.disk.write(volume.start, old, volume.sectorSize);
    system.disk.write(volume.start + volume.bytes - old.size(), old, volume.sectorSize);
}

/// Formats a disk of use; a write gets lost, or none when its number is 0.
Status formatOldDisk(FakeSystem& system, bool isPartition, int lostWrite) {
    plug(system, isPartition);
    fillWithOldData(system);
    system.lostWrite = lostWrite;
    return format(system, options);
}

/// Done is only what is as if nothing had been lost: a range may have been cleared twice. Returns how many
/// losses have been found.
int sweepLostWrites(bool isPartition) {
    FakeSystem good;
    EXPECT_EQ(formatOldDisk(good, isPartition, 0), Status::Done);
    int found = 0;
    for (int write = 1; write <= good.writes; ++write) {
        FakeSystem system;
        const Status status = formatOldDisk(system, isPartition, write);
        const bool isDone = status == Status::Done;
        EXPECT_EQ(isDone, system.output.find("Done") != std::string::npos) << write;
        EXPECT_EQ(isDone, system.disk.sectors == good.disk.sectors) << "the loss of write " << write;
        if (isDone) continue;
        ++found;
        expectNothingThatLooksRight(system.disk, "the loss of write " + std::to_string(write));
    }
    return found;
}

} // namespace

TEST(FaultSweep, WriteThatIsLostSilently) {
    for (const bool isPartition : {false, true})
        EXPECT_GE(sweepLostWrites(isPartition), 8);
}

TEST(FaultSweep, DiskThatIsFreeOrInTheUsersUse) {
    for (const bool isPartition : {false, true}) {
        for (const bool isMounted : {false, true}) {
            for (const bool failingRead : {false, true})
                EXPECT_GT(sweepFree({isPartition, isMounted, failingRead}), 20);
        }
    }
}

TEST(FaultSweep, DiskThatTheSystemHasMounted) {
    for (const bool isPartition : {false, true}) {
        for (const bool failingRead : {false, true})
            sweepMountedBySystem(isPartition, failingRead);
    }
}
