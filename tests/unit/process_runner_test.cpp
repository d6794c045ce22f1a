#include "format/process_runner.h"

#include "fake.h"
#include "fake_process.h"
#include "toolkit/dispatch.h"

#include <gtest/gtest.h>

using fake::Child;
using fake::computer;
using fake::console;
using Module1::runConsoleProgram;
using namespace std::chrono_literals;
using Calls = std::vector<std::string>;

namespace {

class ProcessRunner : public testing::Test {
protected:
    ProcessRunner() {
        fake::reset();
        fake::resetConsole();
    }

    static std::string onlyMessage() {
        EXPECT_EQ(computer().messages.size(), 1U);
        if (computer().messages.empty()) return {};
        EXPECT_EQ(computer().messages[0].style, 48);
        EXPECT_EQ(computer().messages[0].title, "");
        return computer().messages[0].text;
    }
};

} // namespace

TEST_F(ProcessRunner, CollectsWhatTheProgramWritesUntilItEnds) {
    computer().onPump = [] {
        if (computer().pumps == 2) console().child.write("Proceed (y/n)? ");
        if (computer().pumps == 5) console().child.write("Done");
        if (computer().pumps == 6) console().child.exit();
    };
    EXPECT_EQ(runConsoleProgram("tool.exe -x E:"), "Proceed (y/n)? Done");
    EXPECT_EQ(console().commandLines, Calls{"tool.exe -x E:"});
    EXPECT_TRUE(computer().messages.empty());
}

TEST_F(ProcessRunner, AnswersOnceAndClosesTheProcessBeforeThePipe) {
    console().onStart = [](Child& child) { child.exit(); };
    EXPECT_EQ(runConsoleProgram("tool.exe"), "");
    EXPECT_EQ(console().calls, (Calls{"pipe", "start", "answer y", "close process", "close pipe"}));
}

TEST_F(ProcessRunner, OutputThatWaitsWhenTheProgramHasEndedIsRead) {
    const std::string large(1'000'000, 'x');
    console().onStart = [&](Child& child) {
        child.write(large);
        child.exit();
    };
    EXPECT_EQ(runConsoleProgram("tool.exe"), large);
}

TEST_F(ProcessRunner, OutputWrittenAfterTheLastLookIntoThePipeIsRead) {
    console().onLook = [](Child& child) {
        if (child.running) child.write("Done");
        child.exit();
    };
    EXPECT_EQ(runConsoleProgram("tool.exe"), "Done");
}

TEST_F(ProcessRunner, OutputMayHoldNuls) {
    const std::string bytes("a\0b\0", 4);
    console().onStart = [&](Child& child) {
        child.write(bytes);
        child.exit();
    };
    EXPECT_EQ(runConsoleProgram("tool.exe"), bytes);
}

TEST_F(ProcessRunner, WindowEventsAreHandledInEachPass) {
    computer().onPump = [] {
        if (computer().pumps == 100) console().child.exit();
    };
    runConsoleProgram("tool.exe");
    EXPECT_EQ(computer().pumps, 100);
}

TEST_F(ProcessRunner, PassThatFindsNothingWaitsForABit) {
    computer().onPump = [] {
        if (computer().pumps == 2) console().child.write("x");
        if (computer().pumps == 5) console().child.exit();
    };
    EXPECT_EQ(runConsoleProgram("tool.exe"), "x");
    EXPECT_EQ(console().waits, std::vector<std::chrono::milliseconds>(4, 10ms));
}

TEST_F(ProcessRunner, NoPipe) {
    console().pipeFails = true;
    EXPECT_EQ(runConsoleProgram("tool.exe"), "");
    EXPECT_EQ(onlyMessage(), "Anonymous pipe could not be created!");
    EXPECT_EQ(console().calls, Calls{"pipe"});
}

TEST_F(ProcessRunner, NoProgram) {
    console().startFails = true;
    EXPECT_EQ(runConsoleProgram("missing.exe"), "");
    EXPECT_EQ(onlyMessage(), "New process could not be created!");
    EXPECT_EQ(console().calls, (Calls{"pipe", "start", "close pipe"}));
}

TEST_F(ProcessRunner, ReadThatFailsIsReportedAndTriedAgain) {
    console().failingReads = 1;
    console().onStart = [](Child& child) {
        child.write("Done");
        child.exit();
    };
    EXPECT_EQ(runConsoleProgram("tool.exe"), "Done");
    EXPECT_EQ(onlyMessage(), "Reading data from file failed!");
}

TEST_F(ProcessRunner, EndOfTheProgramMeanwhileEndsTheChild) {
    computer().onPump = [] {
        if (computer().pumps == 3) toolkit::endAfterClosing();
    };
    EXPECT_THROW(runConsoleProgram("endless.exe"), toolkit::Unwind);
    EXPECT_EQ(console().calls, (Calls{"pipe", "start", "answer y", "end", "close process", "close pipe"}));
}

TEST_F(ProcessRunner, EndOfTheProgramBehindAMessageEndsTheChild) {
    console().failingReads = 1;
    console().onStart = [](Child& child) { child.write("x"); };
    computer().answer = [](const fake::Message&) {
        toolkit::endAfterClosing();
        return 1;
    };
    EXPECT_THROW(runConsoleProgram("endless.exe"), toolkit::Unwind);
    EXPECT_EQ(console().calls[3], "end");
}

TEST_F(ProcessRunner, WhatAProgramWroteThatIsEndedCountsForNothing) {
    console().onStart = [](Child& child) { child.write("Done"); };
    EXPECT_EQ(runConsoleProgram("endless.exe", [] { return computer().pumps < 5; }), "");
    EXPECT_EQ(computer().pumps, 5);
    EXPECT_EQ(console().calls[3], "end");
}

TEST_F(ProcessRunner, GivingUpAProgramThatHasEndedByThenKeepsWhatItWrote) {
    computer().onPump = [] {
        console().child.write("Done");
        console().child.exit();
    };
    EXPECT_EQ(runConsoleProgram("tool.exe", [] { return false; }), "Done");
    EXPECT_EQ(console().calls, (Calls{"pipe", "start", "answer y", "close process", "close pipe"}));
}
