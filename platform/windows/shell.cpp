#include "platform/shell.h"
#include "base/letters.h"

#include "platform/http_address.h"
#include "platform/windows/ansi_text.h"
#include "platform/windows/path.h"
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

bool isWebAddress(std::string_view file) {
    return base::startsWithNoCase(file, "http:") || base::startsWithNoCase(file, "https:");
}

/// An address goes into the command line of the browser, where a quote or a blank would end it. Empty when it
/// is none.
std::string withoutOddCharacters(std::string_view address) {
    return httpAddress(address).value_or("");
}

bool isFolder(const UniqueHandle& file) {
    BY_HANDLE_FILE_INFORMATION info{};
    return GetFileInformationByHandle(file.get(), &info) != FALSE &&
           (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
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
    const auto target = exactAnsi(isWebAddress(file) ? withoutOddCharacters(file) : std::string(file));
    if (!target || target->empty()) return ShellFileNotFound;
    const HINSTANCE code =
        ShellExecuteA(ownerWindow(owner), nearestAnsi(verb).c_str(), target->c_str(),
                      nearestAnsi(parameters).c_str(), nearestAnsi(directory).c_str(), showCommand);
    return static_cast<int>(reinterpret_cast<std::intptr_t>(code));
}

// The backslash at the end makes it a folder. Without one the shell looks for programs, too: for "E:\Fotos"
// it may find E:\Fotos.exe. While the folder is open nothing else can take its place.
int showFolder(ShellOwner owner, std::string_view folder) {
    const QuietErrors quiet;
    Place place;
    if (locate(folder, place) != FileResult::Ok || !place.isFolder()) return ShellPathNotFound;
    const std::string path = place.isRoot ? place.native : place.native + "\\";
    const UniqueHandle opened(CreateFileA(path.c_str(), FILE_LIST_DIRECTORY,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                          FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    if (!opened || !isFolder(opened)) return ShellPathNotFound;
    const HINSTANCE code =
        ShellExecuteA(ownerWindow(owner), "open", path.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
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
