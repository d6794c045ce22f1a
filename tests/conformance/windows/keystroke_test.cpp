// The answer to a program that has the active window: it is typed.
#include "platform/process.h"

#include "tests/conformance/console_run.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <array>

using namespace conformance;
using platform::Pipe;
using platform::Process;

namespace {

std::string restOf(Pipe& pipe, Process& process) {
    std::string output;
    const auto end = std::chrono::steady_clock::now() + deadline;
    for (bool ended = false; !ended && std::chrono::steady_clock::now() < end; Sleep(1)) {
        ended = process.ended();
        while (readAvailable(pipe, output)) {
        }
    }
    return output;
}

/// False when it does not get the active window in time.
bool waitForWindow(const char* className) {
    const auto end = std::chrono::steady_clock::now() + deadline;
    std::array<char, 64> active{};
    while (std::string_view(active.data()) != className && std::chrono::steady_clock::now() < end) {
        Sleep(1);
        GetClassNameA(GetForegroundWindow(), active.data(), static_cast<int>(active.size()));
    }
    return std::string_view(active.data()) == className;
}

} // namespace

TEST(Keystroke, ReachesTheProgramsWindow) {
    Pipe pipe;
    Process process(beside("keyboard_child.exe"), pipe);
    ASSERT_TRUE(process.started());
    ASSERT_TRUE(waitForOutput(pipe, "ready "));
    ASSERT_TRUE(waitForWindow("KeyboardChild"));
    process.answer("y");
    EXPECT_EQ(restOf(pipe, process), "key y");
}

TEST(Keystroke, ReachesNoOtherProgramsWindow) {
    Pipe pipe;
    Process other(beside("keyboard_child.exe"), pipe);
    ASSERT_TRUE(waitForOutput(pipe, "ready "));
    ASSERT_TRUE(waitForWindow("KeyboardChild"));
    Pipe pipeOfAsked;
    Process asked(beside("process_child.exe") + " answer", pipeOfAsked);
    asked.answer("y");
    EXPECT_EQ(restOf(pipeOfAsked, asked), "Proceed? answer y");
    EXPECT_FALSE(other.ended()) << "it has not got the key";
    other.answer("n");
    EXPECT_EQ(restOf(pipe, other), "key n");
}
