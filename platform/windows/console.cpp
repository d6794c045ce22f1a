#include "platform/console.h"

#include "platform/windows/unique_handle.h"
#include "platform/windows/wide_text.h"

#include <string>

namespace platform {

using namespace windows;

namespace {

std::wstring withWindowsLineEnds(std::string_view text) {
    std::wstring lines;
    for (const wchar_t character : wide(text)) {
        if (character == L'\n') lines += L'\r';
        lines += character;
    }
    return lines;
}

/// To a file, a pipe or a device like NUL, in UTF-8; false when there is none.
bool printRedirected(std::string_view text) {
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    const bool isConsole = GetConsoleMode(output, &mode) != FALSE;
    if (output == nullptr || output == INVALID_HANDLE_VALUE || isConsole) return false;
    DWORD written = 0;
    return WriteFile(output, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) != FALSE;
}

/// The console's prompt is there already, because it does not wait for a program with windows.
void printOnConsole(const std::wstring& text) {
    AttachConsole(ATTACH_PARENT_PROCESS);
    const UniqueHandle console(CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE,
                                           FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                                           nullptr));
    if (!console) return;
    const std::wstring lines = L"\r\n" + text;
    DWORD written = 0;
    WriteConsoleW(console.get(), lines.data(), static_cast<DWORD>(lines.size()), &written, nullptr);
}

} // namespace

void print(std::string_view text) {
    if (!printRedirected(text)) printOnConsole(withWindowsLineEnds(text));
}

} // namespace platform
