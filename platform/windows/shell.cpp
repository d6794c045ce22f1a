#include "platform/shell.h"

#include "platform/windows/ansi_text.h"
#include "platform/windows/quiet_errors.h"
#include "platform/windows/unique_handle.h"

#include <shellapi.h>

#include <array>
#include <string>

namespace platform {

using namespace windows;

namespace {

constexpr std::string_view chooserCommand = "rundll32.exe shell32.dll,OpenAs_RunDLL ";

HWND ownerWindow(ShellOwner owner) {
    return owner == 0 ? GetDesktopWindow() : reinterpret_cast<HWND>(owner);
}

/// Named in full, so that no program of that name in another folder is started.
std::string chooserProgram() {
    std::array<char, MAX_PATH> folder{};
    GetSystemDirectoryA(folder.data(), static_cast<UINT>(folder.size()));
    return std::string(folder.data()) + "\\rundll32.exe";
}

} // namespace

int shellExecute(ShellOwner owner, std::string_view verb, std::string_view file, std::string_view parameters,
                 std::string_view directory, int showCommand) {
    const QuietErrors quiet;
    const auto target = exactAnsi(file);
    if (!target || target->empty()) return ShellFileNotFound;
    const HINSTANCE code =
        ShellExecuteA(ownerWindow(owner), nearestAnsi(verb).c_str(), target->c_str(),
                      nearestAnsi(parameters).c_str(), nearestAnsi(directory).c_str(), showCommand);
    return static_cast<int>(reinterpret_cast<std::intptr_t>(code));
}

bool startOpenWithChooser(std::string_view commandLine) {
    auto command = exactAnsi(commandLine);
    if (!command || command->substr(0, chooserCommand.size()) != chooserCommand) return false;
    STARTUPINFOA start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESHOWWINDOW;
    start.wShowWindow = SW_SHOWNORMAL;
    PROCESS_INFORMATION process{};
    if (CreateProcessA(chooserProgram().c_str(), command->data(), nullptr, nullptr, FALSE,
                       NORMAL_PRIORITY_CLASS, nullptr, nullptr, &start, &process) == FALSE) {
        return false;
    }
    AllowSetForegroundWindow(process.dwProcessId);
    const UniqueHandle processHandle(process.hProcess);
    const UniqueHandle threadHandle(process.hThread);
    return true;
}

} // namespace platform
