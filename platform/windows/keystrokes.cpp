#include "platform/windows/keystrokes.h"

#include "platform/windows/unique_handle.h"

#include <array>
#include <vector>

namespace platform::windows {

namespace {

/// Attached to the console of a process. Doing that may give this program other standard files; they are as
/// before in the end.
class AttachedConsole {
public:
    explicit AttachedConsole(DWORD process) {
        for (std::size_t i = 0; i < numbers.size(); ++i)
            files_[i] = GetStdHandle(numbers[i]);
        attached_ = AttachConsole(process) != FALSE;
    }
    AttachedConsole(const AttachedConsole&) = delete;
    AttachedConsole& operator=(const AttachedConsole&) = delete;
    ~AttachedConsole() {
        if (!attached_) return;
        FreeConsole();
        for (std::size_t i = 0; i < numbers.size(); ++i)
            SetStdHandle(numbers[i], files_[i]);
    }

    explicit operator bool() const { return attached_; }

private:
    static constexpr std::array<DWORD, 3> numbers = {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE};

    std::array<HANDLE, numbers.size()> files_{};
    bool attached_ = false;
};

std::vector<INPUT_RECORD> keyRecords(std::string_view text) {
    std::vector<INPUT_RECORD> records;
    for (const char c : text) {
        const auto virtualKey = static_cast<WORD>(VkKeyScanA(c) & 0xFF);
        INPUT_RECORD record{};
        record.EventType = KEY_EVENT;
        KEY_EVENT_RECORD& key = record.Event.KeyEvent;
        key.wRepeatCount = 1;
        key.wVirtualKeyCode = virtualKey;
        key.wVirtualScanCode = static_cast<WORD>(MapVirtualKeyA(virtualKey, MAPVK_VK_TO_VSC));
        key.uChar.UnicodeChar = static_cast<unsigned char>(c);
        for (const BOOL down : {TRUE, FALSE}) {
            key.bKeyDown = down;
            records.push_back(record);
        }
    }
    return records;
}

bool isConsole(HWND window) {
    std::array<char, 32> name{};
    GetClassNameA(window, name.data(), static_cast<int>(name.size()));
    return std::string_view(name.data()) == "ConsoleWindowClass";
}

} // namespace

bool typeIntoConsole(DWORD process, std::string_view text) {
    const AttachedConsole console(process);
    if (!console) return false;
    const UniqueHandle keyboard(CreateFileA("CONIN$", GENERIC_READ | GENERIC_WRITE,
                                            FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                                            nullptr));
    const std::vector<INPUT_RECORD> records = keyRecords(text);
    DWORD written = 0;
    return keyboard && WriteConsoleInputW(keyboard.get(), records.data(), static_cast<DWORD>(records.size()),
                                          &written) != FALSE;
}

void typeIntoWindow(DWORD process, std::string_view text) {
    const HWND window = GetForegroundWindow();
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    if (window == nullptr || owner != process || isConsole(window)) return;
    for (const char c : text) {
        INPUT key{};
        key.type = INPUT_KEYBOARD;
        key.ki.wScan = static_cast<WORD>(static_cast<unsigned char>(c));
        key.ki.dwFlags = KEYEVENTF_UNICODE;
        SendInput(1, &key, sizeof key);
        key.ki.dwFlags |= KEYEVENTF_KEYUP;
        SendInput(1, &key, sizeof key);
    }
    constexpr UINT patience = 1000; // milliseconds
    DWORD_PTR result = 0;
    SendMessageTimeoutA(window, WM_NULL, 0, 0, SMTO_ABORTIFHUNG, patience, &result);
}

} // namespace platform::windows
