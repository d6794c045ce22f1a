// A machine with a stick in memory, of which one call fails.
#pragma once

#include "tests/fat32format/fake_system.h"
#include "tests/fat32format/windows/stick.h"
#include "tools/fat32format/windows/dialogue.h"
#include "tools/fat32format/windows/volume_facts.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <string>
#include <vector>

namespace fat32format {

/// How the call fails: with an error, or, when that is 0, with an answer of no length.
struct Fault {
    int call = 0; ///< its number; 0 for none
    DWORD error = ERROR_GEN_FAILURE;
};

class MemoryMachine : public Machine {
public:
    static constexpr std::size_t typePlace = 446 + 4; // of the first partition

    MemoryMachine() {
        std::array<unsigned char, 512> table{};
        table.at(typePlace) = 7;
        table[510] = 0x55;
        table[511] = 0xAA;
        disk.write(0, table, 512);
        mark(3, "NTFS    ");
    }

    /// Puts a text into the first sector of the volume.
    void mark(std::size_t place, const std::string& text) {
        Bytes sector(512);
        std::copy(text.begin(), text.end(), sector.begin() + static_cast<std::ptrdiff_t>(place));
        disk.write(stick.start, sector, 512);
    }

    /// Counts a call; whether it is the one that fails.
    bool fails(const std::string& name) {
        if (++calls != fault.call) return false;
        failed = name;
        return true;
    }
    bool did(const std::string& deed) const {
        return std::find(deeds.begin(), deeds.end(), deed) != deeds.end();
    }

    OpenedDevice open(const std::wstring& name, Rights rights) override;
    std::wstring targetOf(char letter) override {
        if (fails("targetOf") || letter != stick.letter) return {};
        return {stick.target.begin(), stick.target.end()};
    }
    UINT driveType(char) override { return fails("driveType") ? DRIVE_UNKNOWN : stick.driveType; }
    std::string labelOf(char) override { return fails("labelOf") ? std::string() : stick.label; }
    std::optional<std::vector<std::wstring>> systemVolumes() override {
        if (fails("systemVolumes") || stick.system == "unknown") return std::nullopt;
        std::vector<std::wstring> names;
        for (const std::string& name : split(stick.system, ','))
            names.emplace_back(name.begin(), name.end());
        return names;
    }
    std::vector<std::string> usersOf(char) override { return split(stick.users, ','); }
    void announce(char) override { deeds.emplace_back("announce"); }
    void rest(std::chrono::milliseconds time) override { rested += time; }

    Stick stick;
    MemoryDisk disk;
    Fault fault;
    int calls = 0;
    std::string failed; ///< name of the call that has failed
    std::vector<std::string> deeds;
    std::size_t longestWrite = 0;
    std::chrono::milliseconds rested{0};
};

class MemoryDevice : public Device {
public:
    MemoryDevice(MemoryMachine& machine, Part part, Rights rights)
        : machine_(machine), part_(part), rights_(rights) {}

    Answer control(DWORD code, std::span<const char> question, std::span<char> answer) override {
        const Deeds deeds = {
            [this](const std::string& deed) { machine_.deeds.push_back(deed); },
            [this] { return machine_.disk.read(0, 512).at(MemoryMachine::typePlace); },
            [this](BYTE type) {
                Bytes sector = machine_.disk.read(0, 512);
                sector.at(MemoryMachine::typePlace) = type;
                machine_.disk.write(0, sector, 512);
            },
        };
        const bool isFailing = machine_.fails("code " + std::to_string(code));
        if (isFailing && (machine_.fault.error != 0 || !answer.empty())) {
            std::fill(answer.begin(), answer.end(), '\0');
            return {machine_.fault.error, 0};
        }
        return answerOf(machine_.stick, deeds, part_, code, question, answer);
    }
    bool read(std::uint64_t offset, std::span<unsigned char> bytes) override {
        EXPECT_NE(rights_, Rights::Ask);
        if (machine_.fails("read") || !reaches(offset + bytes.size())) return false;
        const Bytes found = machine_.disk.read(begin() + offset, bytes.size());
        std::copy(found.begin(), found.end(), bytes.begin());
        return true;
    }
    bool write(std::uint64_t offset, std::span<const unsigned char> bytes) override {
        EXPECT_EQ(rights_, Rights::Write);
        EXPECT_EQ(part_, Part::Volume) << "a disk is only read";
        EXPECT_TRUE(machine_.did("lock"));
        EXPECT_TRUE(machine_.did("dismount"));
        if (machine_.fails("write") || !reaches(offset + bytes.size())) return false;
        machine_.deeds.emplace_back("write");
        machine_.disk.write(begin() + offset, bytes, 512);
        return true;
    }
    /// As FAT's driver does it: a volume that this device has dismounted cannot be flushed any more.
    /// https://github.com/microsoft/Windows-driver-samples/blob/main/filesys/fastfat/flush.c
    bool flush() override {
        EXPECT_EQ(rights_, Rights::Write) << "else nothing may be flushed";
        if (part_ == Part::Volume && machine_.did("dismount")) return false;
        return !machine_.fails("flush") && !machine_.stick.cannotBeFlushed;
    }

private:
    std::uint64_t begin() const { return part_ == Part::Volume ? machine_.stick.start : 0; }
    /// What lies behind the end of the file system is there for those only who have asked for it.
    bool reaches(std::uint64_t end) const {
        constexpr std::uint64_t behind = 4096;
        return part_ == Part::Disk || machine_.did("extended") || end <= machine_.stick.bytes - behind;
    }

    MemoryMachine& machine_;
    Part part_;
    Rights rights_;
};

/// A volume of Windows, on another disk.
class SystemDevice : public Device {
public:
    explicit SystemDevice(MemoryMachine& machine) : machine_(machine) {}
    Answer control(DWORD code, std::span<const char>, std::span<char> answer) override {
        if (machine_.fails("code of Windows' volume")) return {machine_.fault.error, 0};
        return answerOfSystem(machine_.stick, code, answer);
    }
    bool read(std::uint64_t, std::span<unsigned char>) override { return false; }
    bool write(std::uint64_t, std::span<const unsigned char>) override { return false; }
    bool flush() override { return false; }

private:
    MemoryMachine& machine_;
};

inline OpenedDevice MemoryMachine::open(const std::wstring& name, Rights rights) {
    if (fails("open")) return {nullptr, std::max<DWORD>(fault.error, 1)};
    const bool isVolume = name == volumeName(stick.letter);
    if (!isVolume && name != diskName(stick.disk)) return {std::make_unique<SystemDevice>(*this), 0};
    return {std::make_unique<MemoryDevice>(*this, isVolume ? Part::Volume : Part::Disk, rights), 0};
}

/// Answers the question, after something else has happened.
class TestDialogue : public Dialogue {
public:
    std::string output;
    std::optional<std::string> answer = "y";
    std::function<void()> onQuestion;

    void print(const std::string& text) override { output += text; }
    std::optional<std::string> readLine() override {
        if (onQuestion) onQuestion();
        return answer;
    }
};

} // namespace fat32format
