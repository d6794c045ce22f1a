// Running a console program to its end, for the tests of the process service.
#pragma once

#include "platform/process.h"
#include "platform/program_folder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

namespace conformance {

constexpr auto deadline = std::chrono::seconds(60);

/// Path of a file beside the test's program, as the program names it.
inline std::string beside(const std::string& name) {
    return platform::programFolder() + "\\" + name;
}

/// Command line of the test's child program.
inline std::string child(const std::string& arguments) {
    return beside("process_child.exe") + " " + arguments;
}

/// Appends what can be read without waiting; false when there is nothing.
inline bool readAvailable(platform::Pipe& pipe, std::string& output) {
    std::uint32_t available = 0;
    EXPECT_TRUE(pipe.peek(available));
    if (available == 0) return false;
    std::string buffer(available, '\0');
    std::uint32_t count = 0;
    EXPECT_TRUE(pipe.read(buffer, count));
    output.append(buffer, 0, count);
    return true;
}

/// Reads until the output is that text; false when it is not at the deadline.
inline bool waitForOutput(platform::Pipe& pipe, const std::string& expected) {
    std::string output;
    const auto end = std::chrono::steady_clock::now() + deadline;
    while (output != expected && std::chrono::steady_clock::now() < end) {
        if (!readAvailable(pipe, output)) std::this_thread::yield();
    }
    return output == expected;
}

/// Everything the program writes until it ends.
inline std::string outputOf(const std::string& commandLine, const std::string& answer = {}) {
    platform::Pipe pipe;
    EXPECT_TRUE(pipe.created());
    platform::Process process(commandLine, pipe);
    EXPECT_TRUE(process.started()) << commandLine;
    if (!answer.empty()) process.answer(answer);
    std::string output;
    const auto end = std::chrono::steady_clock::now() + deadline;
    for (;;) {
        const bool ended = process.ended();
        if (readAvailable(pipe, output)) continue;
        if (ended) break;
        if (std::chrono::steady_clock::now() > end) {
            ADD_FAILURE() << commandLine << " does not end";
            break;
        }
        std::this_thread::yield();
    }
    return output;
}

inline bool starts(const std::string& commandLine) {
    platform::Pipe pipe;
    return platform::Process(commandLine, pipe).started();
}

} // namespace conformance
