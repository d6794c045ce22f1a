#include "platform/process.h"

#include "tests/conformance/console_run.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

using conformance::beside;
using conformance::child;
using conformance::outputOf;
using conformance::starts;
using platform::Pipe;
using platform::Process;

namespace fs = std::filesystem;

namespace {

/// A file beside the test's program; it goes with this object.
class FileBeside {
public:
    explicit FileBeside(const fs::path& name) : path_(fs::path(platform::programFolder()) / name) {
        fs::create_directories(path_.parent_path());
    }
    FileBeside(const FileBeside&) = delete;
    FileBeside& operator=(const FileBeside&) = delete;
    ~FileBeside() {
        std::error_code error;
        fs::remove(path_, error);
    }

    void write(const std::string& text) const { std::ofstream(path_, std::ios::binary) << text; }
    const fs::path& path() const { return path_; }

private:
    fs::path path_;
};

} // namespace

TEST(Process, ProgramThatWritesNothing) {
    EXPECT_EQ(outputOf(child("nothing")), "");
}

TEST(Process, OutputWithoutALineEnd) {
    EXPECT_EQ(outputOf(child("bytes 5")), "xxxxx");
}

TEST(Process, OutputThatIsLargerThanAnyPipe) {
    constexpr std::size_t size = 10'000'000;
    EXPECT_EQ(outputOf(child("bytes 10000000")), std::string(size, 'x'));
}

TEST(Process, OutputWaitsInThePipeWhenTheProgramHasEnded) {
    Pipe pipe;
    Process process(child("bytes 1000"), pipe);
    ASSERT_TRUE(process.started());
    const auto end = std::chrono::steady_clock::now() + conformance::deadline;
    while (!process.ended() && std::chrono::steady_clock::now() < end)
        std::this_thread::yield();
    ASSERT_TRUE(process.ended());
    std::uint32_t available = 0;
    ASSERT_TRUE(pipe.peek(available));
    EXPECT_EQ(available, 1000U);
}

TEST(Process, AnswerReachesTheProgram) {
    EXPECT_EQ(outputOf(child("answer"), "y"), "Proceed? answer y");
}

TEST(Process, AnswerThatNobodyReadsDisturbsNothing) {
    EXPECT_EQ(outputOf(child("bytes 5"), "y"), "xxxxx");
}

TEST(Process, AnswerToAProgramThatHasEndedDisturbsNothing) {
    Pipe pipe;
    Process process(child("nothing"), pipe);
    const auto end = std::chrono::steady_clock::now() + conformance::deadline;
    while (!process.ended() && std::chrono::steady_clock::now() < end)
        std::this_thread::yield();
    process.answer("y");
    EXPECT_TRUE(process.ended());
}

TEST(Process, ErrorOutputIsNotCollected) {
    EXPECT_EQ(outputOf(child("errors")), "");
}

TEST(Process, ProgramThatFailsIsOneThatEnds) {
    EXPECT_EQ(outputOf(child("fail")), "failed");
}

TEST(Process, ArgumentsArriveOneByOne) {
    EXPECT_EQ(outputOf(child("arguments -c64 E:")), "[-c64][E:]");
    EXPECT_EQ(outputOf(child("arguments  a   b ")), "[a][b]");
    EXPECT_EQ(outputOf(child("arguments \"a b\" c")), "[a b][c]");
    EXPECT_EQ(outputOf(child("arguments \"\"")), "[]");
}

TEST(Process, ProgramPathMayHoldBlanks) {
    const FileBeside program(fs::path("a folder with blanks") / "some tool.exe");
    fs::copy_file(fs::path(platform::programFolder()) / "process_child.exe", program.path(),
                  fs::copy_options::overwrite_existing);
    const std::string path = beside("a folder with blanks\\some tool.exe");
    EXPECT_EQ(outputOf(path + " arguments E:"), "[E:]");
    EXPECT_EQ(outputOf("\"" + path + "\" arguments E:"), "[E:]");
}

// Whoever may write to the folder above could have a program of its own run in the place of the right one.
TEST(Process, ProgramCalledLikeTheBeginningOfThePathIsNotTheOne) {
    const FileBeside program(fs::path("planted beside") / "tool.exe");
    const FileBeside decoy("planted.exe");
    const FileBeside decoyWithoutSuffix("planted");
    const fs::path child = fs::path(platform::programFolder()) / "process_child.exe";
    for (const FileBeside* file : {&program, &decoy, &decoyWithoutSuffix})
        fs::copy_file(child, file->path(), fs::copy_options::overwrite_existing);
    const std::string path = beside("planted beside\\tool.exe");
    EXPECT_EQ(outputOf(path + " arguments E:"), "[E:]");
    fs::remove(program.path());
    EXPECT_FALSE(starts(path + " arguments E:"));
}

// The child takes two seconds; whoever looks after it meanwhile leaves the processor to others.
TEST(Process, WaitingForAProgramIsNoWork) {
    constexpr auto pause = std::chrono::milliseconds(10);
    Pipe pipe;
    Process process(child("pause 2000"), pipe);
    ASSERT_TRUE(process.started());
    const auto begin = std::chrono::steady_clock::now();
    int passes = 0;
    for (; !process.ended() && std::chrono::steady_clock::now() < begin + conformance::deadline; ++passes)
        process.wait(pause);
    const auto time = std::chrono::steady_clock::now() - begin;
    EXPECT_TRUE(process.ended());
    EXPECT_LE(passes, time / pause * 3 / 2);
    EXPECT_GT(passes, 1) << "it waits no longer than it is told";
}

TEST(Process, WaitingEndsWithTheProgram) {
    Pipe pipe;
    Process process(child("pause 200"), pipe);
    ASSERT_TRUE(process.started());
    const auto begin = std::chrono::steady_clock::now();
    process.wait(conformance::deadline);
    EXPECT_TRUE(process.ended());
    EXPECT_LT(std::chrono::steady_clock::now() - begin, conformance::deadline);
}

TEST(Process, RunningProgramHasNotEndedAndIsEndedWithItsObject) {
    Pipe pipe;
    {
        Process process(child("endless"), pipe);
        ASSERT_TRUE(process.started());
        EXPECT_TRUE(conformance::waitForOutput(pipe, "started"));
        EXPECT_FALSE(process.ended());
    }
    std::uint32_t available = 0;
    EXPECT_TRUE(pipe.peek(available));
    EXPECT_EQ(available, 0U);
}

TEST(Process, TwoProgramsDoNotMix) {
    Pipe pipe;
    Process endless(child("endless"), pipe);
    ASSERT_TRUE(endless.started());
    EXPECT_TRUE(conformance::waitForOutput(pipe, "started"));
    EXPECT_EQ(outputOf(child("answer"), "n"), "Proceed? answer n");
    EXPECT_FALSE(endless.ended());
}

TEST(Process, MissingProgramDoesNotStart) {
    EXPECT_FALSE(starts(beside("missing.exe")));
    EXPECT_FALSE(starts(beside("missing.exe") + " -c64 E:"));
    EXPECT_FALSE(starts(beside("missing folder\\tool.exe")));
}

TEST(Process, CommandLineThatNamesNothingDoesNotStart) {
    for (const char* line : {"", " ", "\"", "\"\"", "\" \" x"})
        EXPECT_FALSE(starts(line)) << line;
}

TEST(Process, FolderDoesNotStart) {
    EXPECT_FALSE(starts(platform::programFolder()));
}

TEST(Process, FileThatIsNoProgramDoesNotStart) {
    const FileBeside file("not_a_program.exe");
    file.write("Just a text.\n");
    EXPECT_FALSE(starts(beside("not_a_program.exe")));
    fs::permissions(file.path(), fs::perms::owner_all);
    EXPECT_FALSE(starts(beside("not_a_program.exe")));
}

TEST(Process, ProgramThatDidNotStartHasEnded) {
    Pipe pipe;
    Process process(beside("missing.exe"), pipe);
    ASSERT_FALSE(process.started());
    process.answer("y");
    process.wait(conformance::deadline);
    EXPECT_TRUE(process.ended());
}

TEST(Pipe, IsEmptyAtFirst) {
    Pipe pipe;
    ASSERT_TRUE(pipe.created());
    std::uint32_t available = 1;
    EXPECT_TRUE(pipe.peek(available));
    EXPECT_EQ(available, 0U);
}

TEST(Pipe, GivesNoMoreThanTheBufferTakes) {
    Pipe pipe;
    Process process(child("bytes 1000"), pipe);
    std::uint32_t available = 0;
    const auto end = std::chrono::steady_clock::now() + conformance::deadline;
    while (available < 1000 && std::chrono::steady_clock::now() < end)
        ASSERT_TRUE(pipe.peek(available));
    std::string buffer(600, '\0');
    std::uint32_t count = 0;
    EXPECT_TRUE(pipe.read(buffer, count));
    EXPECT_EQ(count, 600U);
    EXPECT_TRUE(pipe.read(buffer, count));
    EXPECT_EQ(count, 400U);
}
