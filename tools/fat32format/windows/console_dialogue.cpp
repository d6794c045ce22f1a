#include "tools/fat32format/windows/console_dialogue.h"

#include "platform/windows/wide_text.h"

#include <io.h>
#include <windows.h>

#include <algorithm>
#include <array>
#include <utility>

namespace fat32format {

using platform::windows::narrow;
using platform::windows::UniqueHandle;
using platform::windows::wide;

namespace {

constexpr std::size_t longestLine = 1000; // bytes; what is longer is no answer
constexpr int looks = 25;
constexpr DWORD pause = 10; // milliseconds

UniqueHandle copyOfStandardFile(DWORD number) {
    const HANDLE given = GetStdHandle(number);
    if (given == nullptr || given == INVALID_HANDLE_VALUE || GetFileType(given) == FILE_TYPE_UNKNOWN)
        return {};
    HANDLE copy = nullptr;
    const HANDLE process = GetCurrentProcess();
    DuplicateHandle(process, given, process, &copy, 0, FALSE, DUPLICATE_SAME_ACCESS);
    return UniqueHandle(copy);
}

UniqueHandle openConsole(const wchar_t* name) {
    return UniqueHandle(CreateFileW(name, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, OPEN_EXISTING, 0, nullptr));
}

bool isConsole(const UniqueHandle& file) {
    DWORD mode = 0;
    return file && GetConsoleMode(file.get(), &mode) != FALSE;
}

bool isModifier(WORD key) {
    constexpr std::array<WORD, 14> modifiers = {VK_SHIFT,    VK_CONTROL,  VK_MENU,    VK_LSHIFT, VK_RSHIFT,
                                                VK_LCONTROL, VK_RCONTROL, VK_LMENU,   VK_RMENU,  VK_LWIN,
                                                VK_RWIN,     VK_CAPITAL,  VK_NUMLOCK, VK_SCROLL};
    return std::find(modifiers.begin(), modifiers.end(), key) != modifiers.end();
}

bool isKeyPress(const INPUT_RECORD& record) {
    return record.EventType == KEY_EVENT && record.Event.KeyEvent.bKeyDown != FALSE &&
           !isModifier(record.Event.KeyEvent.wVirtualKeyCode);
}

/// Its character in UTF-8; nothing for a key that has none, or that is pressed together with Ctrl or Alt.
std::string characterOf(const KEY_EVENT_RECORD& key) {
    constexpr DWORD commands = LEFT_CTRL_PRESSED | RIGHT_CTRL_PRESSED | LEFT_ALT_PRESSED | RIGHT_ALT_PRESSED;
    const wchar_t character = key.uChar.UnicodeChar;
    if (character < L' ' || (key.dwControlKeyState & commands) != 0) return {};
    return narrow({&character, 1});
}

std::string withWindowsLineEnds(std::string_view text) {
    std::string lines;
    for (const char c : text) {
        if (c == '\n') lines += '\r';
        lines += c;
    }
    return lines;
}

} // namespace

ConsoleDialogue::ConsoleDialogue()
    : input_(copyOfStandardFile(STD_INPUT_HANDLE)), output_(copyOfStandardFile(STD_OUTPUT_HANDLE)) {
    constexpr std::array files = {0, 1, 2};
    for (const int file : files)
        _close(file);
    if (isConsole(input_)) keyboard_ = std::move(input_);
    if (!output_) output_ = openConsole(L"CONOUT$");
    outputIsConsole_ = isConsole(output_);
}

void ConsoleDialogue::print(const std::string& text) {
    if (outputIsConsole_ && keyboard_) FlushConsoleInputBuffer(keyboard_.get());
    const std::string lines = withWindowsLineEnds(text);
    if (outputIsConsole_)
        printOnConsole(lines);
    else if (output_)
        printBytes(lines);
}

void ConsoleDialogue::printOnConsole(std::string_view text) {
    const std::wstring characters = wide(text);
    DWORD written = 0;
    WriteConsoleW(output_.get(), characters.data(), static_cast<DWORD>(characters.size()), &written, nullptr);
}

void ConsoleDialogue::printBytes(std::string_view bytes) {
    DWORD written = 0;
    while (!bytes.empty() &&
           WriteFile(output_.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) !=
               FALSE &&
           written != 0)
        bytes.remove_prefix(written);
}

std::optional<std::string> ConsoleDialogue::readLine() {
    return input_ ? readBytes() : readKey();
}

/// Byte by byte, so that nothing behind the line is taken.
std::optional<std::string> ConsoleDialogue::readBytes() {
    std::optional<std::string> line;
    for (;;) {
        char byte = 0;
        DWORD count = 0;
        ReadFile(input_.get(), &byte, 1, &count, nullptr); // it counts what it has read when it fails, too
        if (count == 0) return line;
        if (!line) line.emplace();
        if (byte == '\n' || byte == '\r' || line->size() == longestLine) return line;
        line->push_back(byte);
        if (*line == "y" && !moreFollows()) return line;
    }
}

/// True when the input has ended, as well.
bool ConsoleDialogue::moreFollows() const {
    if (GetFileType(input_.get()) != FILE_TYPE_PIPE) return true;
    for (int look = 0; look < looks; ++look) {
        DWORD available = 0;
        if (PeekNamedPipe(input_.get(), nullptr, 0, nullptr, &available, nullptr) == FALSE || available != 0)
            return true;
        Sleep(pause);
    }
    return false;
}

std::optional<std::string> ConsoleDialogue::readKey() {
    keyboard_.close(); // later keys are for whoever reads next
    const UniqueHandle keyboard = openConsole(L"CONIN$");
    INPUT_RECORD record{};
    DWORD count = 0;
    while (keyboard && ReadConsoleInputW(keyboard.get(), &record, 1, &count) != FALSE && count != 0) {
        if (!isKeyPress(record)) continue;
        std::string key = characterOf(record.Event.KeyEvent);
        if (outputIsConsole_) print(key); // nobody else shows it
        return key;
    }
    return std::nullopt;
}

} // namespace fat32format
