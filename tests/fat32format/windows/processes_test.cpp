// The two processes: one that asks and shows, and one that may write.
#include "tests/fat32format/windows/child_run.h"
#include "tools/fat32format/windows/first_process.h"
#include "tools/fat32format/windows/message_pipe.h"
#include "tools/fat32format/windows/second_process.h"
#include "tools/fat32format/windows/security.h"

#include <gtest/gtest.h>

#include <sddl.h>

#include <algorithm>
#include <array>
#include <chrono>

using namespace fat32format;
using namespace fat32format::test;
using namespace std::chrono_literals;
using platform::windows::UniqueHandle;

namespace {

const std::string formatter = beside("played_formatter.exe");
constexpr int failed = 1;
constexpr int declined = 8;
constexpr int notAuthorised = 9;
constexpr ChildRun::Way withoutRights{.withoutRights = true};

class TypedDialogue : public Dialogue {
public:
    explicit TypedDialogue(std::optional<std::string> line = "y") : line_(std::move(line)) {}
    void print(const std::string& text) override { printed += text; }
    std::optional<std::string> readLine() override {
        ++asked;
        return line_;
    }

    std::string printed;
    int asked = 0;

private:
    std::optional<std::string> line_;
};

UniqueHandle startOtherEnd(const std::string& number, const std::string& what) {
    std::string command = beside("other_end.exe") + " " + number + " " + what;
    STARTUPINFOA start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION started{};
    CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr, nullptr,
                   &start, &started);
    UniqueHandle(started.hThread).close();
    return UniqueHandle(started.hProcess);
}

/// A start of other_end in the place of the formatter.
Start otherEnd(const std::string& what) {
    return [what](const std::wstring& parameters) {
        const std::string text(parameters.begin(), parameters.end());
        return Started{startOtherEnd(text.substr(text.rfind('=') + 1), what), 0};
    };
}

/// One that is started and does not come to the pipe; `own` is the test's own handle to it.
Started silentOther(UniqueHandle& own) {
    Started started{startOtherEnd("1", "silent"), 0};
    HANDLE copy = nullptr;
    const HANDLE process = GetCurrentProcess();
    DuplicateHandle(process, started.process.get(), process, &copy, 0, FALSE, DUPLICATE_SAME_ACCESS);
    own = UniqueHandle(copy);
    return started;
}

std::uint64_t numberIn(const std::wstring& parameters) {
    return std::stoull(parameters.substr(parameters.rfind(L'=') + 1));
}

Start refusedWith(DWORD error) {
    return [error](const std::wstring&) { return Started{{}, error}; };
}

struct Outcome {
    int status;
    std::string printed;
    int asked;
};

Outcome outcomeWith(const Start& start, std::optional<std::string> line = "y",
                    std::chrono::milliseconds patience = 50s) {
    TypedDialogue dialogue(std::move(line));
    const int status = formatElevated({'E', 64, false}, dialogue, start, patience);
    return {status, dialogue.printed, dialogue.asked};
}

UniqueHandle openAsOther(std::uint64_t number) {
    return UniqueHandle(CreateFileW(pipeName(number).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr));
}

} // namespace

TEST(FirstProcess, ParametersAreMadeOfTheOptions) {
    EXPECT_EQ(parametersFor({'E', 64, false}, 7), L"-c64 E: --pipe=7");
    EXPECT_EQ(parametersFor({'F', 1, true}, 18446744073709551615U),
              L"-c1 F: --any-bus --pipe=18446744073709551615");
}

TEST(FirstProcess, EveryRunHasAPipeOfItsOwn) {
    std::wstring first;
    std::wstring second;
    for (std::wstring* const parameters : {&first, &second})
        outcomeWith([&](const std::wstring& given) {
            *parameters = given;
            return Started{{}, ERROR_CANCELLED};
        });
    EXPECT_NE(first, second);
}

TEST(FirstProcess, RefusedRightsHaveAStatusOfTheirOwn) {
    for (const DWORD error : {ERROR_CANCELLED, ERROR_ACCESS_DENIED, ERROR_ACCESS_DISABLED_BY_POLICY}) {
        const Outcome outcome = outcomeWith(refusedWith(error));
        EXPECT_EQ(outcome.status, notAuthorised);
        EXPECT_EQ(outcome.printed, "Windows was not allowed to start the formatter as administrator. "
                                   "Nothing has been changed.\n");
    }
}

TEST(FirstProcess, AnotherErrorOfTheStartIsTold) {
    const Outcome outcome = outcomeWith(refusedWith(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(outcome.status, failed);
    EXPECT_NE(outcome.printed.find("Windows error 2."), std::string::npos) << outcome.printed;
}

TEST(FirstProcess, SpeaksForTheOther) {
    const Outcome outcome = outcomeWith(otherEnd("behave"));
    EXPECT_EQ(outcome.status, 5);
    EXPECT_EQ(outcome.printed, "hello\nline y");
    EXPECT_EQ(outcome.asked, 1);
}

TEST(FirstProcess, TheEndOfTheInputIsTold) {
    EXPECT_EQ(outcomeWith(otherEnd("behave"), std::nullopt).printed, "hello\nend");
}

TEST(FirstProcess, WhatCannotBeSentIsNoAnswer) {
    EXPECT_EQ(outcomeWith(otherEnd("behave"), std::string(5000, 'y')).printed, "hello\nend");
    EXPECT_EQ(outcomeWith(otherEnd("behave"), "y\x1B").printed, "hello\nend");
}

TEST(FirstProcess, WhatIsNoMessageEndsTheRun) {
    for (const char* const what :
         {"escape", "bytes", "word", "line", "nothing", "oversize", "vanish", "crash"}) {
        const Outcome outcome = outcomeWith(otherEnd(what));
        EXPECT_EQ(outcome.status, failed) << what;
        EXPECT_TRUE(
            outcome.printed.starts_with("hello\nThe formatter with an administrator's rights has broken "
                                        "off."))
            << what << ": " << outcome.printed;
        EXPECT_EQ(outcome.asked, 0) << what;
    }
}

TEST(FirstProcess, DoesNotWaitForWhoHasEnded) {
    const Outcome outcome = outcomeWith(otherEnd("early"));
    EXPECT_EQ(outcome.status, failed);
    EXPECT_NE(outcome.printed.find("does not answer"), std::string::npos) << outcome.printed;
}

TEST(FirstProcess, DoesNotWaitForEver) {
    UniqueHandle other;
    const auto start = [&](const std::wstring&) { return silentOther(other); };
    const Outcome outcome = outcomeWith(start, "y", 100ms);
    TerminateProcess(other.get(), 0);
    EXPECT_EQ(outcome.status, failed);
    EXPECT_NE(outcome.printed.find("does not answer"), std::string::npos) << outcome.printed;
}

// It is this process that comes to the pipe, and not the one that was started.
TEST(FirstProcess, AStrangerIsNotListenedTo) {
    UniqueHandle stranger;
    UniqueHandle other;
    const auto start = [&](const std::wstring& parameters) {
        stranger = openAsOther(numberIn(parameters));
        for (const std::string_view message : {"print Done\n", "end"}) {
            OVERLAPPED operation{};
            WriteFile(stranger.get(), message.data(), static_cast<DWORD>(message.size()), nullptr,
                      &operation);
        }
        return silentOther(other);
    };
    const Outcome outcome = outcomeWith(start, "y", 1000ms);
    TerminateProcess(other.get(), 0);
    ASSERT_TRUE(stranger);
    EXPECT_EQ(outcome.status, failed);
    EXPECT_EQ(outcome.printed, "Another program has taken the place of the formatter with an administrator's "
                               "rights. Nothing has been changed.\n");
}

TEST(Pipe, OnlyTheUserAndAdministratorsMayOpenIt) {
    const UniqueHandle pipe = pipeForOneOther(pipeName(1), longestMessage);
    ASSERT_TRUE(pipe);
    std::array<unsigned char, 1024> descriptor{};
    DWORD size = 0;
    ASSERT_TRUE(GetKernelObjectSecurity(pipe.get(), DACL_SECURITY_INFORMATION, descriptor.data(),
                                        static_cast<DWORD>(descriptor.size()), &size));
    wchar_t* text = nullptr;
    ASSERT_TRUE(ConvertSecurityDescriptorToStringSecurityDescriptorW(
        descriptor.data(), SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &text, nullptr));
    const std::wstring rights = text;
    LocalFree(text);
    EXPECT_TRUE(rights.starts_with(L"D:P(A;;")) << testing::PrintToString(rights);
    EXPECT_TRUE(rights.ends_with(L";;;BA)")) << testing::PrintToString(rights);
    EXPECT_EQ(std::count(rights.begin(), rights.end(), L'('), 2) << testing::PrintToString(rights);
}

TEST(Pipe, IsNotMadeWhereThereIsOne) {
    const UniqueHandle pipe = pipeForOneOther(pipeName(1), longestMessage);
    EXPECT_FALSE(pipeForOneOther(pipeName(1), longestMessage));
}

TEST(Pipe, OneProcessMayOpenItOnce) {
    const UniqueHandle pipe = pipeForOneOther(pipeName(1), longestMessage);
    const UniqueHandle first = openAsOther(1);
    EXPECT_TRUE(first);
    EXPECT_FALSE(openAsOther(1));
}

TEST(SecondProcess, GoesToNoPipeOfAnotherProgram) {
    const UniqueHandle ready(CreateEventA(nullptr, TRUE, FALSE, "other-end-is-ready"));
    const UniqueHandle other = startOtherEnd("2", "serve");
    ASSERT_EQ(WaitForSingleObject(ready.get(), 50'000), WAIT_OBJECT_0);
    EXPECT_EQ(PipeDialogue::connect(2), nullptr);
    EXPECT_FALSE(openAsOther(2));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_PIPE_BUSY}) << "it was open";
    TerminateProcess(other.get(), 0);
}

TEST(SecondProcess, GoesToNoPipeThatIsNotThere) {
    EXPECT_EQ(PipeDialogue::connect(3), nullptr);
}

TEST(SecondProcess, TakesALineForAnAnswerAndNothingElse) {
    const auto answerTo = [](const std::string& bytes) {
        const UniqueHandle server = pipeForOneOther(pipeName(4), longestMessage);
        const auto dialogue = PipeDialogue::connect(4);
        EXPECT_NE(dialogue, nullptr);
        if (!dialogue) return std::optional<std::string>("no pipe");
        OVERLAPPED operation{};
        WriteFile(server.get(), bytes.data(), static_cast<DWORD>(bytes.size()), nullptr, &operation);
        return dialogue->readLine();
    };
    EXPECT_EQ(answerTo("line y"), "y");
    for (const std::string& bytes : {std::string("end"), std::string("print y"), std::string("line y\n"),
                                     std::string("y"), std::string("ask"), "line " + std::string(5000, 'y')})
        EXPECT_EQ(answerTo(bytes), std::nullopt) << bytes;
}

TEST(SecondProcess, NobodyThereIsTheEndOfTheInput) {
    UniqueHandle server = pipeForOneOther(pipeName(5), longestMessage);
    const auto dialogue = PipeDialogue::connect(5);
    ASSERT_NE(dialogue, nullptr);
    server.close();
    dialogue->print("lost");
    EXPECT_EQ(dialogue->readLine(), std::nullopt);
}

TEST(SecondProcess, SeesWhetherTheFirstIsThere) {
    UniqueHandle server = pipeForOneOther(pipeName(6), longestMessage);
    const auto dialogue = PipeDialogue::connect(6);
    ASSERT_NE(dialogue, nullptr);
    EXPECT_TRUE(dialogue->isThere());
    server.close();
    EXPECT_FALSE(dialogue->isThere());
}

TEST(SecondProcess, WhoSaysWhatWasNotAskedForIsNotThere) {
    for (const std::string_view bytes : {"end", "line n", "x"}) {
        const UniqueHandle server = pipeForOneOther(pipeName(6), longestMessage);
        const auto dialogue = PipeDialogue::connect(6);
        ASSERT_NE(dialogue, nullptr);
        OVERLAPPED operation{};
        WriteFile(server.get(), bytes.data(), static_cast<DWORD>(bytes.size()), nullptr, &operation);
        EXPECT_FALSE(dialogue->isThere()) << bytes;
    }
}

// The rest with both processes, as Windows starts them.

TEST(TwoProcesses, AskShowAndEndAsOne) {
    ChildRun run(formatter + " -c64 E:", withoutRights);
    run.write("y\n");
    EXPECT_EQ(run.status(), 0);
    EXPECT_EQ(run.output(),
              "Größe: 1 GB\r\nFormat drive (y/n)? \r\n[y]\r\n100 percent completed.\r\nDone\r\n");
}

TEST(TwoProcesses, AnotherAnswerArrivesToo) {
    ChildRun run(formatter + " -c64 E:", withoutRights);
    run.write("yes\n");
    EXPECT_EQ(run.status(), declined);
    EXPECT_TRUE(run.waitFor("[yes]")) << run.output();
}

TEST(TwoProcesses, OptionsAndStatusArePassedOn) {
    ChildRun run(formatter + " M: --any-bus -c8", withoutRights);
    EXPECT_EQ(run.status(), 10);
    EXPECT_EQ(run.output(), "written 8 any\r\n");
}

TEST(TwoProcesses, ALongTextArrivesWhole) {
    ChildRun run(formatter + " -c64 L:", withoutRights);
    EXPECT_EQ(run.status(), 0);
    EXPECT_EQ(run.output().size(), 4001U + 2000U + 2U);
}

TEST(TwoProcesses, AnExceptionIsToldAndIsAFailure) {
    ChildRun run(formatter + " -c64 X:", withoutRights);
    EXPECT_EQ(run.status(), failed);
    EXPECT_EQ(run.output(), "It is played to fail.\r\n");
    ChildRun alone(formatter + " -c64 X:", {});
    EXPECT_EQ(alone.status(), failed);
    EXPECT_EQ(alone.output(), "It is played to fail.\r\n");
}

TEST(TwoProcesses, ACrashIsAFailure) {
    ChildRun run(formatter + " -c64 C:", withoutRights);
    EXPECT_EQ(run.status(), failed);
    EXPECT_TRUE(
        run.output().starts_with("so far\r\nThe formatter with an administrator's rights has broken off."))
        << run.output();
}

TEST(TwoProcesses, NothingIsChangedWhenTheFirstOneEndsBeforeTheAnswer) {
    removeBeside("answer.txt");
    ChildRun run(formatter + " -c64 E:", withoutRights);
    ASSERT_TRUE(run.waitFor("(y/n)? "));
    run.kill();
    EXPECT_EQ(noteBeside("answer.txt"), "none");
}

TEST(TwoProcesses, TheSecondOneKnowsBeforeItWritesWhetherTheFirstOneIsThere) {
    for (const bool ends : {false, true}) {
        removeBeside("go-on.txt");
        removeBeside("asker.txt");
        ChildRun run(formatter + " -c64 P:", withoutRights);
        run.write("y\n");
        ASSERT_TRUE(run.waitFor("comparing"));
        if (ends) run.kill();
        putBeside("go-on.txt");
        EXPECT_EQ(noteBeside("asker.txt"), ends ? "gone" : "there");
        EXPECT_EQ(run.status(), ends ? 1 : 0);
    }
}

// A volume that has lost its first sector is lost; a finished one is of use.
TEST(TwoProcesses, WhatIsBegunIsFinishedWhenTheFirstOneEnds) {
    removeBeside("go-on.txt");
    removeBeside("finished.txt");
    ChildRun run(formatter + " -c64 W:", withoutRights);
    run.write("y\n");
    ASSERT_TRUE(run.waitFor("writing"));
    run.kill();
    putBeside("go-on.txt");
    EXPECT_EQ(noteBeside("finished.txt"), "finished");
}

// Where no more rights are given than before, a second one must not start a third.
TEST(TwoProcesses, ASecondOneWithoutRightsRefuses) {
    ChildRun run(formatter + " -c64 R:", withoutRights);
    EXPECT_EQ(run.status(), notAuthorised);
    EXPECT_EQ(run.output(), "Windows has started the formatter without an administrator's rights. "
                            "Nothing has been changed.\r\n");
}

// A library that lies beside the program, where a folder of downloads may have it.
TEST(TwoProcesses, AreStartedWithTheSystemsOwnLibraries) {
    const std::string library = beside("shell32.dll");
    removeBeside("shell32.dll.loaded");
    ASSERT_TRUE(CopyFileA(beside("planted.dll").c_str(), library.c_str(), FALSE));
    ChildRun run(formatter + " -c64 R:", withoutRights);
    EXPECT_EQ(run.status(), notAuthorised) << "it has asked the shell";
    EXPECT_EQ(GetFileAttributesA(beside("shell32.dll.loaded").c_str()), INVALID_FILE_ATTRIBUTES);
    removeBeside("shell32.dll");
}

TEST(TwoProcesses, WithRightsOneIsEnough) {
    ChildRun run(formatter + " -c64 R:", {});
    EXPECT_EQ(run.status(), 3);
    EXPECT_EQ(run.output(), "");
}

TEST(TwoProcesses, NoThirdOneIsStarted) {
    for (const char* const arguments :
         {" -c64 E: --pipe=3", " -c64 E: --pipe=x", " -c64 --pipe=3", " --pipe="}) {
        removeBeside("answer.txt");
        ChildRun run(formatter + arguments, withoutRights);
        EXPECT_NE(run.status(), 0) << arguments;
        EXPECT_EQ(run.output(), "") << arguments;
    }
}

TEST(CommandLine, WrongUsageIsToldBeforeAnyRightsAreAskedFor) {
    for (const char* const arguments :
         {"", " -c64", " E:", " -c3 E:", " -c64 E: -y", " --pipe=3 -c64 E:", " -c64 E: /?"}) {
        ChildRun run(formatter + arguments, withoutRights);
        EXPECT_EQ(run.status(), 2) << arguments;
        EXPECT_TRUE(run.output().starts_with("usage: fat32format.exe ")) << run.output();
    }
}

TEST(CommandLine, TheHelpIsToldWithoutRights) {
    for (const char* const argument : {" /?", " -?", " --help"}) {
        ChildRun run(formatter + argument, withoutRights);
        EXPECT_EQ(run.status(), 0) << argument;
        EXPECT_NE(run.output().find("exit status:\r\n"), std::string::npos) << run.output();
    }
}
