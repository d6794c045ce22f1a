// The answer to a program that has the active window: it is typed.
#include "platform/process.h"

#include "tests/conformance/console_run.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <array>

using namespace conformance;
using platform::Pipe;
using platform::Process;

namespace {

std::string restOf(Pipe& pipe, Process& process) {
    std::string output;
    const auto end = std::chrono::steady_clock::now() + deadline;
    for (bool ended = false; !ended && std::chrono::steady_clock::now() < end;) {
        process.wait(std::chrono::milliseconds(10));
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

/// As a program with windows: what it starts has a console of its own. The console of whoever runs the tests
/// is not come back to, their output goes elsewhere.
class KeystrokeInAConsole : public testing::Test {
protected:
    KeystrokeInAConsole() { FreeConsole(); }
};

std::string keyOf(const std::string& commandLine) {
    Pipe pipe;
    Process process(beside(commandLine), pipe);
    EXPECT_TRUE(process.started());
    process.answer("y");
    return restOf(pipe, process);
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

TEST_F(KeystrokeInAConsole, ReachesAProgramThatReadsKeys) {
    EXPECT_EQ(keyOf("console_child.exe records"), "key y");
    EXPECT_EQ(keyOf("console_child.exe getch"), "key y");
}

TEST_F(KeystrokeInAConsole, ReachesAConsoleThatIsMadeLater) {
    EXPECT_EQ(keyOf("late_console_child.exe records"), "key y");
}

TEST_F(KeystrokeInAConsole, ReachesNoOtherConsole) {
    Pipe pipe;
    Process other(beside("console_child.exe records"), pipe);
    Pipe pipeOfAsked;
    Process asked(beside("console_child.exe records"), pipeOfAsked);
    asked.answer("y");
    EXPECT_EQ(restOf(pipeOfAsked, asked), "key y");
    other.wait(std::chrono::milliseconds(100));
    EXPECT_FALSE(other.ended()) << "it has not got the key";
    other.answer("n");
    EXPECT_EQ(restOf(pipe, other), "key n");
}

// Whoever shares a console with this program would get the keys, too.
TEST_F(KeystrokeInAConsole, IsNotTypedIntoAConsoleThatIsShared) {
    ASSERT_TRUE(AllocConsole());
    Pipe pipe;
    {
        Process process(beside("console_child.exe records"), pipe);
        ASSERT_TRUE(process.started());
        process.answer("y");
        process.wait(std::chrono::milliseconds(500));
        EXPECT_FALSE(process.ended());
    }
    FreeConsole();
}

// It may write to them: they are those of whoever started it.
TEST_F(KeystrokeInAConsole, LeavesTheStandardFilesAlone) {
    constexpr std::array files = {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE};
    std::array<HANDLE, files.size()> before{};
    std::transform(files.begin(), files.end(), before.begin(), GetStdHandle);
    EXPECT_EQ(keyOf("console_child.exe records"), "key y");
    for (std::size_t i = 0; i < files.size(); ++i)
        EXPECT_EQ(GetStdHandle(files[i]), before[i]) << i;
    EXPECT_EQ(GetConsoleCP(), 0U) << "it has no console again";
}
