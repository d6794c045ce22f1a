// A console program that runs under the eyes of a test.
#pragma once

#include "platform/windows/unique_handle.h"

#include <string>

#include <windows.h>

namespace fat32format::test {

/// Path of a file beside the test's program.
std::string beside(const std::string& name);
void removeBeside(const std::string& name);
/// Makes an empty one.
void putBeside(const std::string& name);
/// What is in a file beside the test's program, as soon as it is there; empty at the deadline.
std::string noteBeside(const std::string& name);

class ChildRun {
public:
    enum class Input {
        Pipe,
        None,   ///< no standard input
        Console ///< the child's own, made for it
    };
    enum class Output {
        Pipe,
        None,
        Stale,  ///< staleOutput
        Console ///< the child's own; only together with the input
    };
    struct Way {
        Input input = Input::Pipe;
        Output output = Output::Pipe;
        bool withoutRights = false; ///< with the token that somebody has who was not asked yet
    };

    ChildRun(const std::string& commandLine, const Way& way);
    ChildRun(const ChildRun&) = delete;
    ChildRun& operator=(const ChildRun&) = delete;
    ~ChildRun(); ///< ends it

    DWORD id() const { return id_; }
    void write(const std::string& text);
    void endInput() { inputWrite_.close(); }
    void endOutput() { outputRead_.close(); }
    /// Whether the output has the text before the deadline.
    bool waitFor(const std::string& text);
    void kill();
    /// Its exit status, when it has ended and everything is read; -1 at the deadline.
    int status();
    const std::string& output() const { return output_; }

private:
    bool readSome();

    platform::windows::UniqueHandle process_;
    platform::windows::UniqueHandle inputWrite_;
    platform::windows::UniqueHandle outputRead_;
    DWORD id_ = 0;
    std::string output_;
};

} // namespace fat32format::test
