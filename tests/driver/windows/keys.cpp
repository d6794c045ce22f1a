#include "tests/driver/windows/input.h"
#include "tests/driver/windows/request.h"

#include <array>
#include <cctype>
#include <utility>

namespace probe {

namespace {

constexpr std::array<std::pair<std::string_view, WORD>, 19> keyNames{{{"Tab", VK_TAB},
                                                                      {"Return", VK_RETURN},
                                                                      {"Escape", VK_ESCAPE},
                                                                      {"Space", VK_SPACE},
                                                                      {"Backspace", VK_BACK},
                                                                      {"Delete", VK_DELETE},
                                                                      {"Up", VK_UP},
                                                                      {"Down", VK_DOWN},
                                                                      {"Left", VK_LEFT},
                                                                      {"Right", VK_RIGHT},
                                                                      {"Home", VK_HOME},
                                                                      {"End", VK_END},
                                                                      {"F1", VK_F1},
                                                                      {"F4", VK_F4},
                                                                      {"F10", VK_F10},
                                                                      {"+", VK_ADD},
                                                                      {"Ctrl", VK_CONTROL},
                                                                      {"Alt", VK_MENU},
                                                                      {"Shift", VK_SHIFT}}};

WORD keyOf(std::string_view name) {
    for (const auto& [known, key] : keyNames)
        if (known == name) return key;
    if (name.size() == 1 && std::isalnum(static_cast<unsigned char>(name[0])) != 0)
        return static_cast<WORD>(std::toupper(static_cast<unsigned char>(name[0])));
    throw Failure("no key of the name " + std::string(name));
}

bool isExtended(WORD key) {
    return key == VK_DELETE || (key >= VK_END && key <= VK_DOWN);
}

void send(WORD key, DWORD flags) {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = key;
    input.ki.wScan = static_cast<WORD>(MapVirtualKeyW(key, MAPVK_VK_TO_VSC));
    input.ki.dwFlags = flags | (isExtended(key) ? KEYEVENTF_EXTENDEDKEY : 0);
    SendInput(1, &input, sizeof input);
}

/// Keys go to whatever window is in front; one of the program's is, unless the test has just begun.
void activateProgram() {
    const HWND front = GetForegroundWindow();
    for (const HWND window : programWindows())
        if (window == front) return;
    activate(findWindow({}));
}

std::vector<WORD> keysOf(std::string_view name) {
    std::vector<WORD> keys;
    for (;;) {
        const std::size_t plus = name.find('+', 1);
        keys.push_back(keyOf(name.substr(0, plus)));
        if (plus == std::string_view::npos) return keys;
        name.remove_prefix(plus + 1);
    }
}

} // namespace

void typeText(std::wstring_view text) {
    if (!text.empty()) activateProgram();
    for (const wchar_t character : text) {
        INPUT input{};
        input.type = INPUT_KEYBOARD;
        input.ki.wScan = character;
        input.ki.dwFlags = KEYEVENTF_UNICODE;
        SendInput(1, &input, sizeof input);
        input.ki.dwFlags |= KEYEVENTF_KEYUP;
        SendInput(1, &input, sizeof input);
    }
}

void pressKey(std::string_view name) {
    activateProgram();
    const std::vector<WORD> keys = keysOf(name);
    for (const WORD key : keys)
        send(key, 0);
    for (auto key = keys.rbegin(); key != keys.rend(); ++key)
        send(*key, KEYEVENTF_KEYUP);
}

void compose(std::wstring_view text) {
    activateProgram();
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    GetGUIThreadInfo(GetWindowThreadProcessId(GetForegroundWindow(), nullptr), &info);
    for (const wchar_t unit : text)
        PostMessageW(info.hwndFocus, WM_IME_CHAR, unit, 1);
}

} // namespace probe
