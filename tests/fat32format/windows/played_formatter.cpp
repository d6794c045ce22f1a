// The formatter's program with a played format: everything but the disk is real. The letter tells what it
// does.
#include "tools/fat32format/windows/program.h"

#include "tests/fat32format/windows/other_token.h"
#include "tests/fat32format/windows/stale_output.h"

#include <windows.h>

#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

using namespace fat32format;
using fat32format::test::staleOutput;
using platform::windows::UniqueHandle;

namespace {

constexpr UINT crash = 0xC0000005;

std::string besideThis(const char* name) {
    char path[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    const std::string text = path;
    return text.substr(0, text.rfind('\\') + 1) + name;
}

void note(const char* name, const std::string& text) {
    const std::string path = besideThis(name);
    std::ofstream(path + ".part", std::ios::binary) << text;
    MoveFileExA((path + ".part").c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING);
}

Status ask(Dialogue& dialogue) {
    dialogue.print("Größe: 1 GB\nFormat drive (y/n)? ");
    const auto answer = dialogue.readLine();
    note("answer.txt", answer ? "[" + *answer + "]" : "none");
    dialogue.print("\n[" + answer.value_or("none") + "]\n");
    if (answer != "y") return Status::Declined;
    dialogue.print("100 percent completed.\nDone\n");
    return Status::Done;
}

void waitUntilTold() {
    const std::string goOn = besideThis("go-on.txt");
    while (GetFileAttributesA(goOn.c_str()) == INVALID_FILE_ATTRIBUTES)
        Sleep(1);
}

/// What has been described may have to be looked at again before anything is written.
Status prepareForLong(Dialogue& dialogue) {
    if (dialogue.readLine() != "y") return Status::Declined;
    dialogue.print("comparing\n");
    waitUntilTold();
    const bool isThere = dialogue.isThere();
    note("asker.txt", isThere ? "there" : "gone");
    return isThere ? Status::Done : Status::Declined;
}

Status writeForLong(Dialogue& dialogue) {
    if (dialogue.readLine() != "y") return Status::Declined;
    dialogue.print("writing\n");
    waitUntilTold();
    dialogue.print("100 percent completed.\n");
    note("finished.txt", "finished");
    return Status::Done;
}

/// The number that the process was told to be its standard output, and that means no file at its start, comes
/// to mean a file of its own.
Status printBesideAFile(Dialogue& dialogue) {
    constexpr int most = 1000;
    const std::string name = besideThis("disk.txt");
    HANDLE file = nullptr;
    for (int i = 0; i < most && file != staleOutput; ++i)
        file = CreateFileA(name.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                           CREATE_ALWAYS, 0, nullptr);
    if (file != staleOutput) return Status::Failed;
    dialogue.print("This is no place for words.\n");
    std::puts("Nor for these.");
    std::fflush(nullptr);
    LARGE_INTEGER size{};
    return GetFileSizeEx(file, &size) != FALSE && size.QuadPart == 0 ? Status::Done : Status::InUse;
}

Status play(Dialogue& dialogue, const Options& options) {
    switch (options.letter) {
    case 'E':
        return ask(dialogue);
    case 'Q':
        waitUntilTold();
        return ask(dialogue);
    case 'S':
        return printBesideAFile(dialogue);
    case 'P':
        return prepareForLong(dialogue);
    case 'W':
        return writeForLong(dialogue);
    case 'L':
        dialogue.print(std::string(4001, 'x') + std::string(1000, '\n') + "ü");
        return Status::Done;
    case 'M':
        dialogue.print("written " + std::to_string(options.sectorsPerCluster) +
                       (options.anyBus ? " any" : "") + "\n");
        return Status::WriteProtected;
    case 'X':
        throw std::runtime_error("It is played to fail.");
    case 'C':
        dialogue.print("so far\n");
        ExitProcess(crash);
    default:
        return Status::UnknownLetter;
    }
}

/// As Windows does it when the user agrees: with the other one of the user's two tokens. Wine's "runas"
/// starts a program with the same rights; that is what "R:" gets.
Started startWithRights(const std::wstring& parameters) {
    if (parameters.find(L" R:") != std::wstring::npos) return startElevated(parameters);
    std::wstring command = L"formatter " + parameters;
    STARTUPINFOW start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION started{};
    const UniqueHandle token = test::otherToken();
    if (CreateProcessAsUserW(token.get(), imageOf(GetCurrentProcess(), 0).c_str(), command.data(), nullptr,
                             nullptr, FALSE, CREATE_NEW_CONSOLE, nullptr, nullptr, &start, &started) == FALSE)
        return {{}, GetLastError()};
    UniqueHandle(started.hThread).close();
    return {UniqueHandle(started.hProcess), 0};
}

} // namespace

int main(int argc, char** argv) {
    return run(std::vector<std::string>(argv + 1, argv + argc), {isElevated, startWithRights, play});
}
