// Console programs: starting one, reading what it writes, answering its question.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

namespace platform {

/// An anonymous pipe that carries bytes from a process's standard output to this program. It keeps its write
/// end open itself, so its end is never seen: what tells that nothing will come any more is the process.
/// Closed, read end first, when it goes. Windows: `CreatePipe`,
/// https://learn.microsoft.com/windows/win32/api/namedpipeapi/nf-namedpipeapi-createpipe
class Pipe {
public:
    Pipe();
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    ~Pipe();

    /// False when the pipe could not be created; such a pipe is empty, and nothing can be read from it.
    bool created() const noexcept { return state_ != nullptr; }

    /// Tells how many bytes can be read without waiting. False, with 0, when that cannot be told. Windows:
    /// `PeekNamedPipe`,
    /// https://learn.microsoft.com/windows/win32/api/namedpipeapi/nf-namedpipeapi-peeknamedpipe
    bool peek(std::uint32_t& available) const;

    /// Waits until there is something, stores at most a buffer of it and tells how much that is. False, with
    /// 0, when reading fails. Windows: `ReadFile`,
    /// https://learn.microsoft.com/windows/win32/api/fileapi/nf-fileapi-readfile
    bool read(std::span<char> buffer, std::uint32_t& count);

private:
    friend class Process;
    struct State;
    std::unique_ptr<State> state_;
};

/// A running console program. Its standard output goes into the pipe, which must outlive it; its error output
/// is lost. A program that is still running when this object goes is ended. Windows: `CreateProcessA`,
/// https://learn.microsoft.com/windows/win32/api/processthreadsapi/nf-processthreadsapi-createprocessa
class Process {
public:
    /// Starts the program that the command line, UTF-8, begins with; the rest are its arguments, separated by
    /// blanks, with double quotes around one that holds blanks. The program's own path is absolute and may
    /// hold blanks without quotes, if no argument holds a backslash: it ends somewhere behind the last one,
    /// and never at a blank in the name of a folder.
    Process(std::string_view commandLine, Pipe& output);
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process();

    /// False when the program could not be started: there is none, or it cannot be executed.
    bool started() const noexcept { return state_ != nullptr; }

    /// Answers the question that the program asks, or will ask, as if the user had typed it. There is one
    /// answer to a program. One that never reads is not disturbed by it. A program that cannot take the
    /// answer yet gets it in a later wait(). No other program ever gets it. Windows: keys that are typed into
    /// the program's console (`WriteConsoleInput`,
    /// https://learn.microsoft.com/windows/console/writeconsoleinput) and into its window when that is the
    /// active one, and standard input.
    void answer(std::string_view text);

    /// Waits until the program ends, or until that time is over, so that looking after it costs nothing. May
    /// return earlier when the program writes.
    void wait(std::chrono::milliseconds longest);

    /// Whether the program has ended; does not wait. Everything it wrote can be read by then. Windows:
    /// `WaitForSingleObject` with a time-out of 0,
    /// https://learn.microsoft.com/windows/win32/api/synchapi/nf-synchapi-waitforsingleobject
    bool ended();

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace platform
