#include "platform/process.h"

#include "platform/windows/ansi_text.h"
#include "platform/windows/command_line.h"
#include "platform/windows/keystrokes.h"
#include "platform/windows/quiet_errors.h"
#include "platform/windows/unique_handle.h"

#include <windows.h>

#include <string>

namespace platform {

using namespace windows;

namespace {

constexpr DWORD endedByUs = 1;

SECURITY_ATTRIBUTES inheritable() {
    return {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
}

bool createPipe(UniqueHandle& readEnd, UniqueHandle& writeEnd) {
    SECURITY_ATTRIBUTES attributes = inheritable();
    HANDLE read = nullptr;
    HANDLE write = nullptr;
    if (CreatePipe(&read, &write, &attributes, 0) == FALSE) return false;
    readEnd = UniqueHandle(read);
    writeEnd = UniqueHandle(write);
    return true;
}

/// An object that ends its processes, and what they started, when its last handle is closed.
UniqueHandle endingJob() {
    UniqueHandle job(CreateJobObjectA(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits, sizeof limits);
    return job;
}

} // namespace

struct Pipe::State {
    UniqueHandle write; // members go in the order opposite to this one
    UniqueHandle read;
};

Pipe::Pipe() {
    auto ends = std::make_unique<State>();
    if (createPipe(ends->read, ends->write)) state_ = std::move(ends);
}

Pipe::~Pipe() = default;

bool Pipe::peek(std::uint32_t& available) const {
    available = 0;
    DWORD count = 0;
    if (!state_ || PeekNamedPipe(state_->read.get(), nullptr, 0, nullptr, &count, nullptr) == FALSE)
        return false;
    available = count;
    return true;
}

bool Pipe::read(std::span<char> buffer, std::uint32_t& count) {
    count = 0;
    DWORD stored = 0;
    const auto size = static_cast<DWORD>(buffer.size());
    if (!state_ || ReadFile(state_->read.get(), buffer.data(), size, &stored, nullptr) == FALSE) return false;
    count = stored;
    return true;
}

struct Process::State {
    UniqueHandle job;       // it goes last, and with it whatever of the program still runs
    UniqueHandle inputRead; ///< stays open here, so that no answer meets a broken pipe
    UniqueHandle inputWrite;
    UniqueHandle thread;
    UniqueHandle process;
    DWORD id = 0;
    std::string keys; ///< still to be typed

    State() = default;
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ~State() {
        if (WaitForSingleObject(process.get(), 0) == WAIT_OBJECT_0) return;
        TerminateProcess(process.get(), endedByUs); // should it not be in the job
    }

    bool start(std::string command, HANDLE output) {
        if (!createPipe(inputRead, inputWrite)) return false;
        // With a copy of its own input's write end the program would never see that input end.
        SetHandleInformation(inputWrite.get(), HANDLE_FLAG_INHERIT, 0);
        STARTUPINFOA start{};
        start.cb = sizeof start;
        start.dwFlags = STARTF_USESTDHANDLES;
        start.hStdInput = inputRead.get();
        start.hStdOutput = output;
        SECURITY_ATTRIBUTES attributes = inheritable();
        PROCESS_INFORMATION started{};
        if (CreateProcessA(nullptr, command.data(), &attributes, &attributes, TRUE, NORMAL_PRIORITY_CLASS,
                           nullptr, nullptr, &start, &started) == FALSE) {
            return false;
        }
        process = UniqueHandle(started.hProcess);
        thread = UniqueHandle(started.hThread);
        id = started.dwProcessId;
        job = endingJob();
        AssignProcessToJobObject(job.get(), process.get());
        return true;
    }

    /// A fresh console takes a moment to be there.
    void typeKeys() {
        if (!keys.empty() && typeIntoConsole(id, keys)) keys.clear();
    }
};

Process::Process(std::string_view commandLine, Pipe& output) {
    const QuietErrors quiet;
    const auto command = quotedCommandLine(commandLine);
    if (!command || !output.created()) return;
    auto state = std::make_unique<State>();
    if (state->start(*command, output.state_->write.get())) state_ = std::move(state);
}

Process::~Process() = default;

/// By keystroke for a program that reads its console or has a window, and on standard input, which ends
/// behind the line, for one that reads that; whichever it is, the other answers are never read.
void Process::answer(std::string_view text) {
    if (!state_ || !state_->inputWrite) return;
    typeIntoWindow(state_->id, text);
    state_->keys = text;
    state_->typeKeys();
    const std::string line = nearestAnsi(text) + "\r\n";
    DWORD written = 0;
    WriteFile(state_->inputWrite.get(), line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
    state_->inputWrite.close();
}

void Process::wait(std::chrono::milliseconds longest) {
    if (!state_) return;
    state_->typeKeys();
    WaitForSingleObject(state_->process.get(), static_cast<DWORD>(longest.count()));
}

bool Process::ended() {
    return !state_ || WaitForSingleObject(state_->process.get(), 0) == WAIT_OBJECT_0;
}

} // namespace platform
