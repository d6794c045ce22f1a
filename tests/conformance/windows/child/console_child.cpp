// A program that asks the keyboard of its console for a key, and tells which it was; for the test of the
// answer by keystroke. "records" reads what happens at the keyboard, "getch" takes the C library's way.

#include <windows.h>

#include <conio.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

constexpr DWORD patience = 50'000; // milliseconds
constexpr DWORD slowness = 500;

[[noreturn]] void tell(const std::string& text) {
    std::printf("%s", text.c_str());
    std::fflush(stdout);
    ExitProcess(0);
}

DWORD WINAPI giveUp(void*) {
    Sleep(patience);
    tell("no key");
}

char keyOfRecords() {
    const HANDLE keyboard =
        CreateFileA("CONIN$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                    OPEN_EXISTING, 0, nullptr);
    INPUT_RECORD record{};
    DWORD count = 0;
    while (ReadConsoleInputA(keyboard, &record, 1, &count) != FALSE) {
        const KEY_EVENT_RECORD& key = record.Event.KeyEvent;
        if (record.EventType == KEY_EVENT && key.bKeyDown != FALSE) return key.uChar.AsciiChar;
    }
    return '?';
}

} // namespace

int main(int argc, char** argv) {
    const std::string mode = argc > 1 ? argv[1] : "";
    if (GetConsoleCP() == 0) { // one that makes its console itself takes its time for it
        Sleep(slowness);
        AllocConsole();
    }
    CloseHandle(CreateThread(nullptr, 0, giveUp, nullptr, 0, nullptr));
    const int key = mode == "getch" ? _getch() : keyOfRecords();
    tell(std::string("key ") + static_cast<char>(key));
}
