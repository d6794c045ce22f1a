#include "tests/fat32format/windows/child_run.h"

#include "tests/fat32format/windows/other_token.h"
#include "tests/fat32format/windows/stale_output.h"

#include <array>
#include <chrono>
#include <fstream>
#include <iterator>

namespace fat32format::test {

using platform::windows::UniqueHandle;

namespace {

constexpr auto deadline = std::chrono::seconds(50);

bool isDue(std::chrono::steady_clock::time_point start) {
    return std::chrono::steady_clock::now() - start > deadline;
}

/// The end that the child does not get is not for it.
void makePipe(UniqueHandle& read, UniqueHandle& write, bool childReads) {
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    HANDLE ends[2] = {};
    CreatePipe(&ends[0], &ends[1], &inheritable, 0);
    SetHandleInformation(ends[childReads ? 1 : 0], HANDLE_FLAG_INHERIT, 0);
    read = UniqueHandle(ends[0]);
    write = UniqueHandle(ends[1]);
}

} // namespace

std::string beside(const std::string& name) {
    char path[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, path, MAX_PATH);
    const std::string text = path;
    return text.substr(0, text.rfind('\\') + 1) + name;
}

void removeBeside(const std::string& name) {
    DeleteFileA(beside(name).c_str());
}

void putBeside(const std::string& name) {
    UniqueHandle(CreateFileA(beside(name).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr))
        .close();
}

std::string noteBeside(const std::string& name) {
    const auto start = std::chrono::steady_clock::now();
    while (!isDue(start)) {
        std::ifstream file(beside(name), std::ios::binary);
        if (file) return {std::istreambuf_iterator<char>(file), {}};
        Sleep(1);
    }
    return {};
}

ChildRun::ChildRun(const std::string& commandLine, const Way& way) {
    UniqueHandle inputRead;
    UniqueHandle outputWrite;
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    if (way.input == Input::Pipe) makePipe(inputRead, inputWrite_, true);
    if (way.output == Output::Pipe) makePipe(outputRead_, outputWrite, false);
    start.hStdInput = inputRead.get();
    start.hStdOutput = outputWrite.get();
    if (way.output == Output::Stale) start.hStdOutput = staleOutput;
    if (way.input == Input::Console) start.dwFlags = 0;
    std::wstring command(commandLine.begin(), commandLine.end());
    PROCESS_INFORMATION started{};
    const UniqueHandle token = way.withoutRights ? otherToken() : UniqueHandle();
    if (token)
        CreateProcessAsUserW(token.get(), nullptr, command.data(), nullptr, nullptr, TRUE, CREATE_NEW_CONSOLE,
                             nullptr, nullptr, &start, &started);
    else
        CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, CREATE_NEW_CONSOLE, nullptr, nullptr,
                       &start, &started);
    process_ = UniqueHandle(started.hProcess);
    UniqueHandle(started.hThread).close();
    id_ = started.dwProcessId;
}

ChildRun::~ChildRun() {
    kill();
}

void ChildRun::kill() {
    TerminateProcess(process_.get(), 1);
    WaitForSingleObject(process_.get(), INFINITE);
}

void ChildRun::write(const std::string& text) {
    DWORD written = 0;
    WriteFile(inputWrite_.get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

bool ChildRun::readSome() {
    std::array<char, 4096> bytes{};
    DWORD available = 0;
    DWORD count = 0;
    if (!outputRead_ || PeekNamedPipe(outputRead_.get(), nullptr, 0, nullptr, &available, nullptr) == FALSE ||
        available == 0 ||
        ReadFile(outputRead_.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr) == FALSE)
        return false;
    output_.append(bytes.data(), count);
    return true;
}

bool ChildRun::waitFor(const std::string& text) {
    const auto start = std::chrono::steady_clock::now();
    while (output_.find(text) == std::string::npos && !isDue(start)) {
        if (!readSome()) Sleep(1);
    }
    return output_.find(text) != std::string::npos;
}

int ChildRun::status() {
    const auto start = std::chrono::steady_clock::now();
    while (!isDue(start)) {
        const bool ended = WaitForSingleObject(process_.get(), 1) == WAIT_OBJECT_0;
        while (readSome()) {
        }
        if (!ended) continue;
        DWORD status = 0;
        GetExitCodeProcess(process_.get(), &status);
        return static_cast<int>(status);
    }
    return -1;
}

} // namespace fat32format::test
