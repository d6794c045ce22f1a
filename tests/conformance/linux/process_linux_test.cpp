// What a process leaves behind on Linux: nothing.
#include "platform/process.h"

#include "tests/conformance/console_run.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sys/wait.h>
#include <unistd.h>

using conformance::beside;
using conformance::outputOf;
using platform::Pipe;
using platform::Process;

namespace fs = std::filesystem;

namespace {

std::size_t openFiles() {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

bool hasChildren() {
    return waitpid(-1, nullptr, WNOHANG) >= 0 || errno != ECHILD;
}

/// A shell script beside the test's program.
class Script {
public:
    Script(const std::string& name, const std::string& text)
        : path_(fs::path(platform::programFolder()) / name) {
        std::ofstream(path_) << "#!/bin/sh\n" << text << '\n';
        fs::permissions(path_, fs::perms::owner_all);
    }
    Script(const Script&) = delete;
    Script& operator=(const Script&) = delete;
    ~Script() { fs::remove(path_); }

private:
    fs::path path_;
};

/// Reads a process id that the child has written, with a blank behind it.
pid_t readProcessId(Pipe& pipe) {
    std::string output;
    const auto end = std::chrono::steady_clock::now() + conformance::deadline;
    while (output.find(' ') == std::string::npos && std::chrono::steady_clock::now() < end)
        conformance::readAvailable(pipe, output);
    return static_cast<pid_t>(std::stol(output));
}

/// Whether the process is gone before the deadline; one that waits for its parent to ask for it is.
bool ends(pid_t process) {
    const auto end = std::chrono::steady_clock::now() + conformance::deadline;
    while (std::chrono::steady_clock::now() < end) {
        std::ifstream stat("/proc/" + std::to_string(process) + "/stat");
        std::string number;
        std::string name;
        std::string state;
        if (!(stat >> number >> name >> state) || state == "Z") return true;
        std::this_thread::yield();
    }
    return false;
}

} // namespace

TEST(ProcessOnLinux, LeavesNoFileAndNoChildBehind) {
    const std::size_t before = openFiles();
    outputOf(conformance::child("answer"), "y");
    EXPECT_FALSE(conformance::starts(beside("missing.exe")));
    {
        Pipe pipe;
        const Process process(conformance::child("endless"), pipe);
    }
    EXPECT_EQ(openFiles(), before);
    EXPECT_FALSE(hasChildren());
}

TEST(ProcessOnLinux, ChildHasItsThreeStandardFilesAlone) {
    const Script script("files.sh", "echo $(ls /proc/self/fd | wc -l)");
    const int extra = dup(STDOUT_FILENO); // without close-on-exec, on purpose
    EXPECT_EQ(outputOf(beside("files.sh")), "4\n") << "three, and the listed folder itself";
    close(extra);
}

TEST(ProcessOnLinux, RunningProgramIsEnded) {
    const Script script("endless.sh", "printf '%d ' $$; exec sleep 1000");
    pid_t child = 0;
    {
        Pipe pipe;
        const Process process(beside("endless.sh"), pipe);
        child = readProcessId(pipe);
        EXPECT_EQ(getpgid(child), child) << "a group of its own";
    }
    EXPECT_EQ(kill(child, 0), -1);
    EXPECT_EQ(errno, ESRCH);
    EXPECT_FALSE(hasChildren());
}

TEST(ProcessOnLinux, WhatTheProgramStartedIsEndedWithIt) {
    const Script script("parent.sh", "sleep 1000 & printf '%d ' $!; wait");
    pid_t grandchild = 0;
    {
        Pipe pipe;
        const Process process(beside("parent.sh"), pipe);
        grandchild = readProcessId(pipe);
    }
    EXPECT_TRUE(ends(grandchild));
}

TEST(ProcessOnLinux, ProgramThatDoesNotWantToEndIsKilled) {
    const Script script("stubborn.sh", "trap '' TERM; printf '%d ' $$; while :; do sleep 1; done");
    pid_t child = 0;
    {
        Pipe pipe;
        const Process process(beside("stubborn.sh"), pipe);
        child = readProcessId(pipe);
    }
    EXPECT_EQ(kill(child, 0), -1);
    EXPECT_FALSE(hasChildren());
}

// It has left its group, which the signals go to: it stands for one in the middle of a write that does not
// end, which the system does not let go either.
TEST(ProcessOnLinux, ProgramThatCannotBeKilledIsNotWaitedForForEver) {
    const Script script("elsewhere.sh", "exec python3 -c 'import os, time\n"
                                        "os.setpgid(0, os.getpgid(os.getppid()))\n"
                                        "print(os.getpid(), end=\" \", flush=True)\n"
                                        "time.sleep(60)'");
    pid_t child = 0;
    std::chrono::steady_clock::time_point begin;
    {
        Pipe pipe;
        const Process process(beside("elsewhere.sh"), pipe);
        child = readProcessId(pipe);
        begin = std::chrono::steady_clock::now();
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
    EXPECT_EQ(kill(child, SIGKILL), 0) << "it is still there";
    const auto end = std::chrono::steady_clock::now() + conformance::deadline;
    while (kill(child, 0) == 0 && std::chrono::steady_clock::now() < end)
        std::this_thread::yield();
    EXPECT_EQ(kill(child, 0), -1) << "it is asked for when it has ended after all";
}

TEST(ProcessOnLinux, SecondQuestionMeetsTheEndOfTheInput) {
    const Script script("twice.sh", "read a; read b || b=end; echo \"$a $b\"");
    EXPECT_EQ(outputOf(beside("twice.sh"), "y"), "y end\n");
}

TEST(ProcessOnLinux, SignalsThatThisProgramIgnoresMeanSomethingToTheChild) {
    const Script script("signals.sh", "grep '^SigIgn' /proc/self/status | cut -f 2");
    auto* const before = std::signal(SIGPIPE, SIG_IGN);
    const unsigned long ignored = std::stoul(outputOf(beside("signals.sh")), nullptr, 16);
    std::signal(SIGPIPE, before);
    EXPECT_EQ(ignored & (1UL << (SIGPIPE - 1)), 0U);
}

TEST(ProcessOnLinux, LongestPieceThatIsAFileIsTheProgram) {
    const Script decoy("some", "echo decoy");
    const Script program("some tool.sh", "echo \"program $*\"");
    EXPECT_EQ(outputOf(beside("some tool.sh -c64 E:")), "program -c64 E:\n");
    EXPECT_EQ(outputOf(beside("some other.sh -c64 E:")), "decoy\n");
}

TEST(ProcessOnLinux, PathThatLeadsElsewhereDoesNotStart) {
    EXPECT_FALSE(conformance::starts("/bin/true"));
    EXPECT_FALSE(conformance::starts("true"));
}
