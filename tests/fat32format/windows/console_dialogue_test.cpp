// What the program takes for an answer, and where its words go. What it got it tells in brackets.
#include "platform/process.h"
#include "platform/windows/keystrokes.h"
#include "tests/fat32format/windows/child_run.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#include <vector>

using namespace fat32format::test;
using Input = ChildRun::Input;
using Output = ChildRun::Output;
using platform::windows::UniqueHandle;

namespace {

const std::string command = beside("played_formatter.exe") + " -c1 E:";

/// What it takes a standard input for that has this in it, and then ends.
std::string answerOf(const std::string& input) {
    ChildRun run(command, {});
    run.write(input);
    run.endInput();
    const int status = run.status();
    const bool done = run.output().ends_with("Done\r\n");
    EXPECT_EQ(status, done ? 0 : 8) << run.output();
    const std::size_t begin = run.output().find('[');
    return run.output().substr(begin, run.output().find(']') - begin + 1);
}

/// Of a program with windows, which has no console.
class Keys : public testing::Test {
protected:
    Keys() {
        FreeConsole();
        removeBeside("answer.txt");
    }

    static void type(const ChildRun& run, const std::string& text) {
        while (
            !platform::windows::typeIntoConsole(run.id(), text)) // a fresh console takes a moment to be there
            Sleep(1);
    }

    static INPUT_RECORD press(WORD key, wchar_t character, DWORD state) {
        INPUT_RECORD record{};
        record.EventType = KEY_EVENT;
        record.Event.KeyEvent.bKeyDown = TRUE;
        record.Event.KeyEvent.wRepeatCount = 1;
        record.Event.KeyEvent.wVirtualKeyCode = key;
        record.Event.KeyEvent.uChar.UnicodeChar = character;
        record.Event.KeyEvent.dwControlKeyState = state;
        return record;
    }

    static void press(const ChildRun& run, const std::vector<INPUT_RECORD>& records) {
        while (AttachConsole(run.id()) == FALSE)
            Sleep(1);
        const UniqueHandle keyboard(CreateFileW(L"CONIN$", GENERIC_READ | GENERIC_WRITE,
                                                FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                                                nullptr));
        DWORD written = 0;
        WriteConsoleInputW(keyboard.get(), records.data(), static_cast<DWORD>(records.size()), &written);
        FreeConsole();
    }

    /// A line of its console, without the blanks at its end.
    static std::wstring lineOfConsole(const ChildRun& run, SHORT row) {
        std::wstring text(40, L' ');
        DWORD count = 0;
        if (AttachConsole(run.id()) == FALSE) return {};
        {
            const UniqueHandle screen(CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE,
                                                  FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                                  0, nullptr));
            ReadConsoleOutputCharacterW(screen.get(), text.data(), static_cast<DWORD>(text.size()), {0, row},
                                        &count);
        }
        FreeConsole();
        return text.substr(0, text.find_last_not_of(L' ') + 1);
    }

    static std::string answerTo(const std::vector<INPUT_RECORD>& records) {
        removeBeside("answer.txt");
        ChildRun run(command, {.input = Input::None});
        press(run, records);
        return noteBeside("answer.txt");
    }
};

} // namespace

TEST(StandardInput, ALineIsTheAnswer) {
    EXPECT_EQ(answerOf("y\r\n"), "[y]");
    EXPECT_EQ(answerOf("y\n"), "[y]");
    EXPECT_EQ(answerOf("y\r"), "[y]");
    EXPECT_EQ(answerOf("y\r\nn\r\n"), "[y]");
}

TEST(StandardInput, ItsEndIsTheEndOfALine) {
    EXPECT_EQ(answerOf("y"), "[y]");
    EXPECT_EQ(answerOf("n"), "[n]");
    EXPECT_EQ(answerOf(""), "[none]");
}

TEST(StandardInput, NothingButYIsY) {
    for (const char* const line : {"yes", "Y", "yy", " y", "y ", "n", "j", ""})
        EXPECT_EQ(answerOf(std::string(line) + "\n"), "[" + std::string(line) + "]");
}

TEST(StandardInput, ALineOfAnyLengthIsTakenNoFurther) {
    EXPECT_EQ(answerOf(std::string(100'000, 'y')), "[" + std::string(1000, 'y') + "]");
}

TEST(StandardInput, AKeyThroughAPipeThatStaysOpen) {
    ChildRun run(command, {});
    run.write("y");
    EXPECT_EQ(run.status(), 0);
    EXPECT_TRUE(run.waitFor("[y]")) << run.output();
}

TEST(StandardInput, AnotherKeyThroughAPipeThatStaysOpenWaitsForItsLine) {
    ChildRun run(command, {});
    run.write("n");
    ASSERT_TRUE(run.waitFor("(y/n)? "));
    run.write("ever\n");
    EXPECT_EQ(run.status(), 8);
    EXPECT_TRUE(run.waitFor("[never]")) << run.output();
}

TEST(StandardOutput, LinesEndAsWindowsEndsThem) {
    ChildRun run(command, {});
    run.write("y\n");
    EXPECT_EQ(run.status(), 0);
    EXPECT_EQ(run.output(),
              "Größe: 1 GB\r\nFormat drive (y/n)? \r\n[y]\r\n100 percent completed.\r\nDone\r\n");
}

TEST(StandardOutput, MayBeMissing) {
    removeBeside("answer.txt");
    ChildRun run(command, {.output = Output::None});
    run.write("y\n");
    EXPECT_EQ(run.status(), 0);
    EXPECT_EQ(noteBeside("answer.txt"), "[y]");
}

TEST(StandardOutput, MayBeClosedMeanwhile) {
    removeBeside("answer.txt");
    ChildRun run(command, {});
    ASSERT_TRUE(run.waitFor("(y/n)? "));
    run.endOutput();
    run.write("y\n");
    EXPECT_EQ(run.status(), 0);
    EXPECT_EQ(noteBeside("answer.txt"), "[y]");
}

// Who started the program had closed it, and the disk gets its number.
TEST(StandardOutput, IsNotTheFileThatComesIntoItsPlace) {
    ChildRun run(beside("played_formatter.exe") + " -c1 S:", {.output = Output::Stale});
    EXPECT_EQ(run.status(), 0);
}

TEST_F(Keys, TheRunnersAnswerIsTaken) {
    platform::Pipe pipe;
    platform::Process process(command, pipe);
    ASSERT_TRUE(process.started());
    process.answer("y");
    while (!process.ended())
        process.wait(std::chrono::milliseconds(10));
    EXPECT_EQ(noteBeside("answer.txt"), "[y]");
}

TEST_F(Keys, OneIsTheAnswerWithoutReturn) {
    ChildRun run(command, {.input = Input::None});
    type(run, "y");
    EXPECT_EQ(run.status(), 0);
    EXPECT_TRUE(run.waitFor("[y]")) << run.output();
}

TEST_F(Keys, ReturnMayFollow) {
    ChildRun run(command, {.input = Input::None});
    type(run, "y\r");
    EXPECT_EQ(run.status(), 0);
}

TEST_F(Keys, AnyOtherOneDeclines) {
    for (const char* const keys : {"n", "Y", "ny", "\ry"}) {
        ChildRun run(command, {.input = Input::None});
        type(run, keys);
        EXPECT_EQ(run.status(), 8) << keys;
    }
}

TEST_F(Keys, ModifiersAreNone) {
    EXPECT_EQ(answerTo({press(VK_SHIFT, 0, SHIFT_PRESSED), press(VK_CONTROL, 0, LEFT_CTRL_PRESSED),
                        press(VK_CAPITAL, 0, CAPSLOCK_ON), press('Y', L'y', 0)}),
              "[y]");
}

TEST_F(Keys, YWithAModifierIsAnotherOne) {
    EXPECT_EQ(answerTo({press('Y', L'y', LEFT_ALT_PRESSED)}), "[]");
    EXPECT_EQ(answerTo({press('Y', 0x19, LEFT_CTRL_PRESSED)}), "[]");
    EXPECT_EQ(answerTo({press(VK_F1, 0, 0)}), "[]");
}

TEST_F(Keys, OnePressedBeforeTheQuestionDoesNotAnswerIt) {
    removeBeside("go-on.txt");
    ChildRun run(beside("played_formatter.exe") + " -c1 Q:",
                 {.input = Input::Console, .output = Output::Console});
    type(run, "y");
    putBeside("go-on.txt");
    while (lineOfConsole(run, 1).empty())
        Sleep(1);
    type(run, "n");
    EXPECT_EQ(noteBeside("answer.txt"), "[n]");
    EXPECT_EQ(run.status(), 8);
}

TEST_F(Keys, AConsoleShowsTheCharactersAndTheKey) {
    ChildRun run(command, {.input = Input::Console, .output = Output::Console});
    const auto line = [&](SHORT row) { return lineOfConsole(run, row); };
    while (line(1).empty())
        Sleep(1);
    EXPECT_EQ(line(0), L"Gr\u00F6\u00DFe: 1 GB");
    EXPECT_EQ(line(1), L"Format drive (y/n)?");
    type(run, "n");
    EXPECT_EQ(noteBeside("answer.txt"), "[n]");
    EXPECT_EQ(run.status(), 8);
}
