// Windows as the formatter sees it, and all that it sees of it: devices that can be opened, asked and written
// to, and what is known of the machine around them.
#pragma once

#include <windows.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace fat32format {

/// What a control code had for an answer.
struct Answer {
    DWORD error = ERROR_SUCCESS; ///< of the system, else why there is none
    std::size_t size = 0;        ///< bytes of it

    explicit operator bool() const { return error == ERROR_SUCCESS; }
};

/// A volume or a disk that is open, until the object goes. Offsets count bytes from its beginning; offsets,
/// lengths and addresses in memory are multiples of its sector's length.
class Device {
public:
    Device() = default;
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;
    virtual ~Device() = default;

    /// https://learn.microsoft.com/windows/win32/api/ioapiset/nf-ioapiset-deviceiocontrol
    virtual Answer control(DWORD code, std::span<const char> question, std::span<char> answer) = 0;
    /// All of the bytes, or false.
    virtual bool read(std::uint64_t offset, std::span<unsigned char> bytes) = 0;
    virtual bool write(std::uint64_t offset, std::span<const unsigned char> bytes) = 0;
    /// Brings what has been written onto the medium. It needs the right to write.
    /// https://learn.microsoft.com/windows/win32/api/fileapi/nf-fileapi-flushfilebuffers
    virtual bool flush() = 0;

    /// A control code without a question and an answer.
    Answer control(DWORD code) { return control(code, {}, {}); }
    /// A question without an argument; no value when it has no complete answer.
    template <typename T>
    std::optional<T> ask(DWORD code) {
        T value{};
        const Answer answer = control(code, {}, {reinterpret_cast<char*>(&value), sizeof value});
        if (!answer || answer.size < sizeof value) return std::nullopt;
        return value;
    }
    template <typename T>
    Answer tell(DWORD code, const T& value) {
        return control(code, {reinterpret_cast<const char*>(&value), sizeof value}, {});
    }
};

struct OpenedDevice {
    std::unique_ptr<Device> device; ///< there when, and only when, there is no error
    DWORD error = ERROR_SUCCESS;
};

/// How far a device is opened.
enum class Rights {
    Ask,  ///< questions only, for which nobody needs a right to read it, and which a locked volume answers,
          ///< too
    Read, ///< past the system's memory, from the medium itself
    Write ///< and read
};

class Machine {
public:
    Machine() = default;
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;
    virtual ~Machine() = default;

    /// `\\.\E:`, `\\.\PhysicalDrive2` or another name that devices are opened by. Others may have it open as
    /// well. https://learn.microsoft.com/windows/win32/api/fileapi/nf-fileapi-createfilew
    virtual OpenedDevice open(const std::wstring& name, Rights rights) = 0;
    /// What the letter stands for, `\Device\HarddiskVolume5`; empty when there is no such letter.
    virtual std::wstring targetOf(char letter) = 0;
    /// DRIVE_REMOVABLE and so on.
    /// https://learn.microsoft.com/windows/win32/api/fileapi/nf-fileapi-getdrivetypew
    virtual UINT driveType(char letter) = 0;
    /// Name of the volume, UTF-8; empty when it has none or cannot be asked.
    virtual std::string labelOf(char letter) = 0;
    /// Names to open the volumes by that Windows starts from and runs on, that hold its page files, and this
    /// program. No value when they cannot be told.
    virtual std::optional<std::vector<std::wstring>> systemVolumes() = 0;
    /// Names of the programs that have files of the volume open, UTF-8; some, or none, when it takes too
    /// long.
    virtual std::vector<std::string> usersOf(char letter) = 0;
    /// The volume has got another content: the file browser is told.
    virtual void announce(char letter) = 0;
    /// Lets some time pass.
    virtual void rest(std::chrono::milliseconds time) = 0;
};

} // namespace fat32format
