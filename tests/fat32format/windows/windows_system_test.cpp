// The half for Windows against a stick in memory: every call fails once, and what no driver under Wine
// answers.
#include "tools/fat32format/windows/windows_system.h"

#include "tests/fat32format/windows/memory_machine.h"
#include "tools/fat32format/formatter.h"

#include <gtest/gtest.h>

#include <set>

using namespace fat32format;

namespace {

constexpr Options options{'E', 1, false};
constexpr std::array<DWORD, 5> errors = {0, ERROR_INVALID_FUNCTION, ERROR_ACCESS_DENIED, ERROR_NOT_READY,
                                         ERROR_GEN_FAILURE};

class WindowsFormatter : public testing::Test {
protected:
    Status run() {
        WindowsSystem system(dialogue, machine);
        return format(system, options);
    }
    bool said(const std::string& text) const { return dialogue.output.find(text) != std::string::npos; }

    MemoryMachine machine;
    TestDialogue dialogue;
};

struct Outcome {
    Status status = Status::Done;
    bool isOver = false; ///< there was no call of that number
    std::string failed;
};

using Setting = std::function<void(MemoryMachine&)>;

bool looksRight(MemoryMachine& machine) {
    const Bytes sector = machine.disk.read(machine.stick.start, 512);
    return sector[510] == 0x55 && sector[511] == 0xAA;
}

/// A run in which one call fails. Whatever it is: what is not done does not look so.
Outcome runWith(const Setting& setting, Fault fault) {
    MemoryMachine machine;
    machine.stick.exchanges = 3;
    machine.fault = fault;
    setting(machine);
    const auto before = machine.disk.sectors;
    TestDialogue dialogue;
    WindowsSystem system(dialogue, machine);
    const Status status = format(system, options);
    const std::string what = "call " + std::to_string(fault.call) + ", " + machine.failed;
    EXPECT_EQ(status == Status::Done, dialogue.output.find("Done") != std::string::npos) << what;
    EXPECT_EQ(status == Status::Done, looksRight(machine)) << what;
    const bool wasDismounted = machine.did("dismount");
    EXPECT_TRUE(wasDismounted || machine.disk.sectors == before) << what;
    EXPECT_TRUE(!wasDismounted || machine.deeds.back() == "announce") << what;
    return {status, machine.calls < fault.call, machine.failed};
}

std::string code(DWORD number) {
    return "code " + std::to_string(number);
}

/// That a stick is refused, with every call failing once, and not touched.
void expectNeverTouched(const Setting& setting) {
    for (const DWORD error : errors) {
        for (int call = 1;; ++call) {
            const Outcome outcome = runWith(
                [&setting](MemoryMachine& machine) {
                    setting(machine);
                    machine.stick.refused[FSCTL_DISMOUNT_VOLUME] = ERROR_ACCESS_DENIED;
                },
                {call, error});
            EXPECT_NE(outcome.status, Status::Done) << outcome.failed;
            EXPECT_NE(outcome.status, Status::Failed) << "it was to be refused: " << outcome.failed;
            if (outcome.isOver) break;
        }
    }
}

} // namespace

TEST_F(WindowsFormatter, FormatsAndAnnouncesIt) {
    EXPECT_EQ(run(), Status::Done) << dialogue.output;
    EXPECT_EQ(machine.disk.read(0, 512).at(MemoryMachine::typePlace), 0x0C);
    EXPECT_EQ(machine.deeds.front(), "lock");
    EXPECT_EQ(machine.deeds.back(), "announce");
    EXPECT_EQ(std::count(machine.deeds.begin(), machine.deeds.end(), "settype"), 1);
    EXPECT_TRUE(said("Drive E: is partition 1 of disk 2"));
}

TEST_F(WindowsFormatter, TypeIsSetBehindTheLastWrite) {
    run();
    const auto type = std::find(machine.deeds.begin(), machine.deeds.end(), "settype");
    EXPECT_EQ(std::find(type, machine.deeds.end(), "write"), machine.deeds.end());
}

TEST_F(WindowsFormatter, NoChangesNothingAndGivesTheVolumeBack) {
    dialogue.answer = "n";
    const auto before = machine.disk.sectors;
    EXPECT_EQ(run(), Status::Declined);
    EXPECT_EQ(machine.disk.sectors, before);
    EXPECT_EQ(machine.deeds, (std::vector<std::string>{"lock", "extended", "unlock"}));
}

TEST_F(WindowsFormatter, VolumeIsLockedBeforeTheQuestion) {
    bool wasLocked = false;
    dialogue.onQuestion = [&] { wasLocked = machine.did("lock") && !machine.did("dismount"); };
    EXPECT_EQ(run(), Status::Done);
    EXPECT_TRUE(wasLocked);
}

TEST(WindowsFaults, EveryFailedCallRefusesOrIsNotNeeded) {
    // What is told for comfort, tried again, or undone with the handle anyway.
    const std::set<std::string> comfort = {"labelOf", code(FSCTL_LOCK_VOLUME), code(FSCTL_UNLOCK_VOLUME)};
    const std::set<std::string> withoutAnswer = {
        code(IOCTL_DISK_IS_WRITABLE), code(FSCTL_DISMOUNT_VOLUME), code(IOCTL_DISK_SET_PARTITION_INFO_EX),
        code(IOCTL_STORAGE_CHECK_VERIFY2), code(FSCTL_ALLOW_EXTENDED_DASD_IO)};
    for (const DWORD error : errors) {
        for (int call = 1;; ++call) {
            const Outcome outcome = runWith([](MemoryMachine&) {}, {call, error});
            if (outcome.isOver) {
                EXPECT_GT(call, 60);
                break;
            }
            // Without a length, a code without an answer is none that failed; a medium is told by the code
            // alone, and once more where the number counts.
            const bool mayWork =
                comfort.contains(outcome.failed) || (error == 0 && withoutAnswer.contains(outcome.failed));
            EXPECT_TRUE(mayWork || outcome.status != Status::Done)
                << "overlooked: " << outcome.failed << ", error " << error << ", call " << call;
        }
    }
}

TEST(WindowsFaults, SystemsDiskIsNeverTouchedWhateverFails) {
    expectNeverTouched([](MemoryMachine& machine) { machine.stick.systemDisk = machine.stick.disk; });
}

TEST(WindowsFaults, SystemPartitionIsNeverTouchedWhateverFails) {
    expectNeverTouched([](MemoryMachine& machine) {
        machine.stick.system = R"(\\.\C:,\\?\GLOBALROOT\Device\HarddiskVolume5)";
    });
}

TEST(WindowsFaults, OtherDisksAreNeverTouchedWhateverFails) {
    expectNeverTouched([](MemoryMachine& machine) { machine.stick.bus = BusTypeNvme; });
    expectNeverTouched([](MemoryMachine& machine) { machine.stick.bus = BusTypeSpaces; });
    expectNeverTouched([](MemoryMachine& machine) { machine.stick.extents = 2; });
    expectNeverTouched([](MemoryMachine& machine) { machine.stick.hasDynamicPartition = true; });
    expectNeverTouched([](MemoryMachine& machine) { machine.stick.driveType = DRIVE_REMOTE; });
}

TEST_F(WindowsFormatter, TooManyPiecesOfAVolumeAreNoAnswer) {
    machine.stick.extents = 1000;
    EXPECT_EQ(run(), Status::SystemVolume);
    EXPECT_TRUE(said("its place on the disk cannot be read")) << dialogue.output;
}

TEST_F(WindowsFormatter, AnswersThatContradictEachOtherRefuse) {
    dialogue.onQuestion = [] { FAIL() << "nothing is asked"; };
    machine.stick.refused[IOCTL_DISK_GET_LENGTH_INFO] = ERROR_INVALID_FUNCTION;
    EXPECT_EQ(run(), Status::DiskChanged);
    machine.stick = {};
    machine.stick.lengthLess = 512;
    EXPECT_EQ(run(), Status::DiskChanged) << "nothing is written behind the end";
    machine.stick = {};
    machine.stick.sectorSize = 0;
    EXPECT_EQ(run(), Status::SystemVolume);
    machine.stick = {};
    machine.stick.diskBytes = 0;
    EXPECT_EQ(run(), Status::SystemVolume);
}

TEST_F(WindowsFormatter, LockIsTriedAgain) {
    machine.stick.refused[FSCTL_LOCK_VOLUME] = ERROR_ACCESS_DENIED;
    machine.stick.users = "Writer";
    EXPECT_EQ(run(), Status::InUse);
    EXPECT_GE(machine.rested, std::chrono::seconds(2)) << "a virus scanner takes its time";
    EXPECT_TRUE(said("Please close: Writer.")) << dialogue.output;
}

TEST_F(WindowsFormatter, DiskThatCannotBeFlushedKeepsWhatItHolds) {
    const auto before = machine.disk.sectors;
    machine.stick.cannotBeFlushed = true;
    EXPECT_EQ(run(), Status::Failed);
    EXPECT_EQ(machine.disk.sectors, before);
}

TEST_F(WindowsFormatter, VolumeWhoseEndCannotBeReachedKeepsWhatItHolds) {
    const auto before = machine.disk.sectors;
    machine.stick.refused[FSCTL_ALLOW_EXTENDED_DASD_IO] = ERROR_INVALID_FUNCTION;
    EXPECT_EQ(run(), Status::Failed);
    EXPECT_TRUE(said("Its last sector cannot be reached.")) << dialogue.output;
    EXPECT_FALSE(said("(y/n)"));
    EXPECT_EQ(machine.disk.sectors, before);
}

TEST_F(WindowsFormatter, SharedOrForbiddenVolume) {
    machine.stick.serial = "";
    for (const auto& [error, status] :
         std::vector<std::pair<DWORD, Status>>{{ERROR_ACCESS_DENIED, Status::NotAuthorised},
                                               {ERROR_SHARING_VIOLATION, Status::InUse},
                                               {ERROR_GEN_FAILURE, Status::Failed}}) {
        MemoryMachine probe;
        TestDialogue words;
        WindowsSystem system(words, probe);
        const auto volume = system.inspect("E:");
        ASSERT_TRUE(volume);
        probe.fault = {probe.calls + 3, error}; // to look at it, its place, and the disk
        const Opened opened = system.open(*volume, Access::Alone);
        EXPECT_EQ(opened.volume, nullptr);
        EXPECT_EQ(opened.outcome, status == Status::InUse           ? Opened::Outcome::InUse
                                  : status == Status::NotAuthorised ? Opened::Outcome::NotAllowed
                                                                    : Opened::Outcome::Failed);
    }
}

TEST_F(WindowsFormatter, TextsOfTheDeviceAreTrimmed) {
    machine.stick.maker = "  ACME   ";
    machine.stick.model = "Stick  ";
    machine.stick.serial = "   77 ";
    EXPECT_EQ(run(), Status::Done);
    EXPECT_TRUE(said("Model:  ACME Stick\n  Serial: 77\n")) << dialogue.output;
}

TEST_F(WindowsFormatter, TypeThatIsNotTakenInSilence) {
    machine.stick.keepsType = true;
    EXPECT_EQ(run(), Status::Failed);
    EXPECT_TRUE(said("does not take the type of the new partition.")) << dialogue.output;
    EXPECT_FALSE(looksRight(machine));
}

TEST_F(WindowsFormatter, OpenVolumeIsAskedItself) {
    WindowsSystem system(dialogue, machine);
    const auto volume = system.inspect("E:");
    ASSERT_TRUE(volume);
    const Opened opened = system.open(*volume, Access::Alone);
    ASSERT_NE(opened.volume, nullptr);
    EXPECT_EQ(opened.volume->identity(), volume->identity());
    EXPECT_EQ(opened.volume->bytes(), volume->bytes);
    machine.stick.start += 512;
    EXPECT_EQ(opened.volume->identity(), std::nullopt) << "another place on the same disk";
    machine.stick.start -= 512;
    machine.stick.refused[IOCTL_VOLUME_GET_VOLUME_DISK_EXTENTS] = ERROR_DEVICE_NOT_CONNECTED;
    EXPECT_EQ(opened.volume->identity(), std::nullopt);
    EXPECT_EQ(opened.volume->bytes(), 0U);
}

/// A driver that tells of more pieces than it has written down.
class LyingDevice : public Device {
public:
    Answer control(DWORD, std::span<const char>, std::span<char> answer) override {
        constexpr DWORD count = 2;
        std::memcpy(answer.data(), &count, sizeof count);
        return {ERROR_SUCCESS, sizeof(VOLUME_DISK_EXTENTS)};
    }
    bool read(std::uint64_t, std::span<unsigned char>) override { return false; }
    bool write(std::uint64_t, std::span<const unsigned char>) override { return false; }
    bool flush() override { return false; }
};

TEST(VolumeFacts, PiecesThatAreNotAllThereAreNoAnswer) {
    LyingDevice device;
    EXPECT_FALSE(extentsOf(device));
    EXPECT_FALSE(pieceOf(device));
}

TEST_F(WindowsFormatter, VolumeWithoutARootFolder) {
    machine.stick.driveType = DRIVE_NO_ROOT_DIR;
    EXPECT_EQ(run(), Status::Done) << dialogue.output;
}

TEST_F(WindowsFormatter, KindsOfDrivesThatAreNoDisks) {
    for (const UINT type : {DRIVE_UNKNOWN, DRIVE_REMOTE, DRIVE_CDROM, DRIVE_RAMDISK}) {
        machine.stick.driveType = type;
        EXPECT_EQ(run(), Status::NoDisk) << type;
    }
}

TEST_F(WindowsFormatter, RandomNumbersDiffer) {
    WindowsSystem system(dialogue, machine);
    std::set<std::uint32_t> numbers;
    for (int i = 0; i < 16; ++i)
        numbers.insert(system.randomNumber());
    EXPECT_GT(numbers.size(), 14U);
}
