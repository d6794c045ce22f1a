// Every system call on the way of a file to its medium fails, or the process ends there, once each.
#include "platform/files.h"

#include "platform/blocking.h"
#include "platform/profile.h"
#include "platform/program_folder.h"
#include "tests/conformance/scratch_files.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/vfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <functional>
#include <set>
#include <string_view>
#include <thread>

using namespace platform;
using namespace conformance;
namespace fs = std::filesystem;

namespace {

constexpr int killed = 99; // exit status of a process that ended at its fault

/// What happens at which call. Only calls while it is armed count.
struct Fault {
    bool armed = false;
    std::string_view call; ///< only this one; empty for all of them
    int at = 0;            ///< the first one is 1; 0 for none
    bool always = false;   ///< at every call from then on
    int error = 0;         ///< the call's error number; 0 ends the process
    std::size_t largestWrite = SIZE_MAX;
    int count = 0;
    std::set<std::string> seen;

    /// The error number that the call fails with, or 0.
    int step(std::string_view name) {
        if (!armed || (!call.empty() && call != name)) return 0;
        seen.emplace(name);
        ++count;
        if (at == 0 || (always ? count < at : count != at)) return 0;
        if (error == 0) _exit(killed);
        return error;
    }
};

Fault fault; // the replaced system calls have no other way to reach it

int failed(int error) {
    errno = error;
    return -1;
}

/// What a medium is told while a file is written, and how long it takes for what is waited for.
struct Medium {
    std::chrono::milliseconds delay{0}; ///< for each 256 KB
    off_t sent = 0;
    off_t arrived = 0;
    off_t mostUnderWay = 0;

    void told(off_t begin, off_t length, unsigned flags) {
        if ((flags & SYNC_FILE_RANGE_WAIT_AFTER) == 0) {
            sent = std::max(sent, begin + length);
            return;
        }
        constexpr off_t block = 256L * 1024;
        const off_t more = std::max<off_t>(begin + length - arrived, 0);
        std::this_thread::sleep_for(delay * ((more + block - 1) / block));
        arrived += more;
        mostUnderWay = std::max(mostUnderWay, sent - arrived);
    }
};

Medium medium;

} // namespace

// These take the place of the C library's functions for this program.
extern "C" {

int openat(int folder, const char* name, int flags, ...) { // NOLINT(cert-dcl50-cpp)
    va_list arguments;
    va_start(arguments, flags);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): it does not see the va_start of a replaced
    // function
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    if (const int error = fault.step("openat")) return failed(error);
    return static_cast<int>(syscall(SYS_openat, folder, name, flags, mode));
}

ssize_t read(int file, void* buffer, size_t size) {
    if (const int error = fault.step("read")) return failed(error);
    return syscall(SYS_read, file, buffer, size);
}

ssize_t write(int file, const void* buffer, size_t size) {
    if (const int error = fault.step("write")) return failed(error);
    return syscall(SYS_write, file, buffer, fault.armed ? std::min(size, fault.largestWrite) : size);
}

int fsync(int file) {
    if (const int error = fault.step("fsync")) return failed(error);
    return static_cast<int>(syscall(SYS_fsync, file));
}

int close(int file) {
    const int error = fault.step("close");
    const int result = static_cast<int>(syscall(SYS_close, file)); // Linux closes it in any case
    return error != 0 ? failed(error) : result;
}

int ftruncate(int file, off_t size) noexcept {
    if (const int error = fault.step("ftruncate")) return failed(error);
    return static_cast<int>(syscall(SYS_ftruncate, file, size));
}

int sync_file_range(int file, off_t begin, off_t length, unsigned flags) {
    medium.told(begin, length, flags);
    return static_cast<int>(syscall(SYS_sync_file_range, file, begin, length, flags));
}

int fstatfs(int file, struct statfs* info) noexcept {
    if (const int error = fault.step("fstatfs")) return failed(error);
    return static_cast<int>(syscall(SYS_fstatfs, file, info));
}

int fchmod(int file, mode_t mode) noexcept {
    if (const int error = fault.step("fchmod")) return failed(error);
    return static_cast<int>(syscall(SYS_fchmod, file, mode));
}

int renameat(int from, const char* name, int to, const char* newName) noexcept {
    if (const int error = fault.step("renameat")) return failed(error);
    return static_cast<int>(syscall(SYS_renameat2, from, name, to, newName, 0));
}
}

namespace {

class Faults : public testing::Test {
protected:
    const std::string oldText = "[s]\r\nk=old\r\n" + std::string(5000, ';') + "\r\n";
    const std::string newText = newContents();

    // In the program folder, so that no look at the table of drives comes in between.
    void SetUp() override { fault = {}; }
    void TearDown() override {
        for (const auto& path : {file, ini, copy})
            fs::remove(path);
    }

    template <class Action>
    static auto with(const Fault& wanted, Action action) {
        fault = wanted;
        fault.armed = true;
        const auto result = action();
        fault.armed = false;
        return result;
    }

    static FileResult writeWith(const Fault& wanted, std::string_view contents = "new") {
        return with(wanted, [contents] { return writeWholeFile(filePath(), contents); });
    }

    static bool setKey() { return writeProfileString("s", "k", "new", programFolder() + "\\faults.ini"); }

    static bool replaceAll() { return replaceProfile(newContents(), programFolder() + "\\faults.ini"); }

    static std::string newContents() { return "[s]\r\nk=new\r\n" + std::string(5000, ';') + "\r\n"; }

    /// Both ways to write a profile.
    static constexpr std::array ways = {setKey, replaceAll};

    /// Each call fails once.
    void surviveAnyFailure(bool (*write)()) {
        put(ini, oldText);
        const auto before = entries(folder);
        int at = 1;
        for (;; ++at) {
            put(ini, oldText);
            Fault wanted;
            wanted.at = at;
            wanted.error = EIO;
            const bool written = with(wanted, write);
            const bool happened = fault.count >= at;
            const std::string text = get(ini);
            EXPECT_TRUE(text == newText || (!written && text == oldText)) << "call " << at;
            EXPECT_EQ(entries(folder), before) << "nothing is left behind, call " << at;
            if (happened) continue;
            EXPECT_TRUE(written);
            break;
        }
        EXPECT_GT(at, 10) << "calls tried";
    }

    /// The process ends at each call.
    void surviveTheEnd(bool (*write)()) {
        int at = 1;
        for (;; ++at) {
            put(ini, oldText);
            const pid_t child = fork();
            ASSERT_GE(child, 0);
            if (child == 0) {
                Fault wanted;
                wanted.at = at;
                wanted.largestWrite = 1000;
                _exit(with(wanted, write) ? 0 : 1);
            }
            int status = 0;
            ASSERT_EQ(waitpid(child, &status, 0), child);
            ASSERT_TRUE(WIFEXITED(status));
            const std::string text = get(ini);
            EXPECT_TRUE(text == newText || text == oldText) << "call " << at;
            removeDrafts();
            if (WEXITSTATUS(status) == killed) continue;
            EXPECT_EQ(WEXITSTATUS(status), 0);
            EXPECT_EQ(text, newText);
            break;
        }
        EXPECT_GT(at, 10) << "calls tried";
    }

    /// What the end of a process leaves behind.
    void removeDrafts() const {
        for (const auto& entry : fs::directory_iterator(folder))
            if (entry.path().extension() == ".tmp") fs::remove(entry.path());
    }

    static std::string filePath() { return programFolder() + "\\faults.tmp"; }
    static std::string copyPath() { return programFolder() + "\\faults-copy.tmp"; }

    fs::path folder = programFolder();
    fs::path file = folder / "faults.tmp";
    fs::path copy = folder / "faults-copy.tmp";
    fs::path ini = folder / "faults.ini";
};

Fault failAt(std::string_view call, int error) {
    Fault wanted;
    wanted.call = call;
    wanted.at = 1;
    wanted.error = error;
    return wanted;
}

} // namespace

TEST_F(Faults, ErrorsOfTheSystemAreTold) {
    EXPECT_EQ(writeWith(failAt("write", ENOSPC)), FileResult::DiskFull);
    EXPECT_EQ(writeWith(failAt("write", EDQUOT)), FileResult::DiskFull);
    EXPECT_EQ(writeWith(failAt("write", EFBIG)), FileResult::DiskFull);
    EXPECT_EQ(writeWith(failAt("write", EIO)), FileResult::DeviceIo);
    EXPECT_EQ(writeWith(failAt("write", ENODEV)), FileResult::DiskNotReady);
    EXPECT_EQ(writeWith(failAt("write", ENXIO)), FileResult::DiskNotReady);
    EXPECT_EQ(writeWith(failAt("write", ENOMEDIUM)), FileResult::DiskNotReady);
    EXPECT_EQ(writeWith(failAt("write", EROFS)), FileResult::PermissionDenied);
    EXPECT_EQ(writeWith(failAt("fsync", EIO)), FileResult::DeviceIo);
    EXPECT_EQ(writeWith(failAt("fsync", ENOSPC)), FileResult::DiskFull);
    EXPECT_EQ(writeWith(failAt("ftruncate", EIO)), FileResult::DeviceIo);
}

TEST_F(Faults, ErrorsOfOpeningAreTold) {
    put(file, "old");
    const auto openWith = [](int error) { return writeWith(failAt("openat", error)); };
    EXPECT_EQ(openWith(EROFS), FileResult::PermissionDenied);
    EXPECT_EQ(openWith(EACCES), FileResult::PermissionDenied);
    EXPECT_EQ(openWith(EPERM), FileResult::PermissionDenied);
    EXPECT_EQ(openWith(ETXTBSY), FileResult::PermissionDenied);
    EXPECT_EQ(openWith(EIO), FileResult::DeviceIo);
    EXPECT_EQ(openWith(ENOMEDIUM), FileResult::DiskNotReady);
    EXPECT_EQ(openWith(EISDIR), FileResult::PathFileAccess);
    EXPECT_EQ(openWith(ENAMETOOLONG), FileResult::PathNotFound);
    EXPECT_EQ(openWith(ELOOP), FileResult::PathNotFound);
    EXPECT_EQ(openWith(EMFILE), FileResult::PathFileAccess);
    EXPECT_EQ(get(file), "old");
}

TEST_F(Faults, AFailureOfClosingIsTold) {
    Fault count;
    count.call = "close";
    EXPECT_EQ(writeWith(count), FileResult::Ok);
    const int closes = fault.count;
    int told = 0;
    for (int at = 1; at <= closes; ++at) {
        Fault wanted = failAt("close", EIO);
        wanted.at = at;
        if (writeWith(wanted) == FileResult::DeviceIo) ++told;
    }
    EXPECT_GE(told, 1);
}

TEST_F(Faults, ASignalInBetweenIsNoFailure) {
    put(file, "text");
    std::string contents;
    for (const std::string_view call : {"write", "fsync"}) {
        EXPECT_EQ(writeWith(failAt(call, EINTR)), FileResult::Ok) << call;
        EXPECT_EQ(get(file), "new");
    }
    EXPECT_EQ(with(failAt("read", EINTR), [&] { return readWholeFile(filePath(), contents); }),
              FileResult::Ok);
    EXPECT_EQ(contents, "new");
}

TEST_F(Faults, AWriteMayTakeAFewBytesAtATime) {
    Fault slow;
    slow.largestWrite = 7;
    const std::string data = pattern(5000);
    EXPECT_EQ(writeWith(slow, data), FileResult::Ok);
    EXPECT_EQ(get(file), data);
    EXPECT_EQ(with(slow, [] { return copyFile(filePath(), copyPath()); }), FileResult::Ok);
    EXPECT_EQ(get(copy), data);
}

TEST_F(Faults, AReadThatFailsLeavesNothing) {
    put(file, pattern(1000000));
    for (int at = 1; at <= 3; ++at) {
        Fault wanted = failAt("read", EIO);
        wanted.at = at;
        std::string contents = "old";
        EXPECT_EQ(with(wanted, [&] { return readWholeFile(filePath(), contents); }), FileResult::DeviceIo);
        EXPECT_EQ(contents, "");
    }
}

TEST_F(Faults, AFastDiskIsReadInLargeBlocks) {
    static int handedOver = 0;
    setBlockingCallRunner([](const std::function<void()>& call) {
        ++handedOver;
        std::thread(call).join();
    });
    const std::string data = pattern(32UL * 1024 * 1024);
    put(file, data); // and so it is in the system's memory
    std::string contents;
    EXPECT_EQ(readWholeFile(filePath(), contents), FileResult::Ok);
    EXPECT_EQ(contents, data);
    EXPECT_LT(handedOver, 80) << "blocks of half a megabyte";
}

/// Whoever ends the program waits for as much.
TEST_F(Faults, ASlowMediumGetsOneBlockAfterTheOther) {
    medium = {};
    medium.delay = std::chrono::milliseconds(120);
    EXPECT_EQ(writeWholeFile(filePath(), pattern(1536UL * 1024)), FileResult::Ok);
    EXPECT_EQ(medium.arrived, 1536L * 1024);
    EXPECT_EQ(medium.mostUnderWay, 0);
}

TEST_F(Faults, AFastMediumHasFourBlocksUnderWayAndNoMore) {
    medium = {};
    EXPECT_EQ(writeWholeFile(filePath(), pattern(32UL * 1024 * 1024)), FileResult::Ok);
    EXPECT_GT(medium.arrived, 16L * 1024 * 1024);
    EXPECT_LE(medium.mostUnderWay, 2L * 1024 * 1024);
}

TEST_F(Faults, AFolderIsAskedOnceWhichFileSystemItHas) {
    const fs::path listed = folder / "listed.tmp";
    fs::create_directory(listed);
    constexpr int files = 20;
    for (int i = 0; i < files; ++i)
        put(listed / std::to_string(i), "");
    Fault count;
    count.call = "fstatfs";
    const int found = with(count, [] {
        FileSearch search(programFolder() + R"(\listed.tmp\*.*)");
        FoundFile entry;
        int all = 0;
        while (search.next(entry))
            ++all;
        return all;
    });
    fs::remove_all(listed);
    EXPECT_EQ(found, files + 2);
    EXPECT_EQ(fault.count, 1);
}

TEST_F(Faults, AFileThatIsNewIsSyncedWithItsFolder) {
    Fault count;
    count.call = "fsync";
    EXPECT_EQ(writeWith(count), FileResult::Ok);
    EXPECT_EQ(fault.count, 2) << "the file and its folder";
    EXPECT_EQ(writeWith(count), FileResult::Ok);
    EXPECT_EQ(fault.count, 1) << "its name is there already";
    EXPECT_EQ(with(count, [] { return copyFile(filePath(), copyPath()); }), FileResult::Ok);
    EXPECT_EQ(fault.count, 2);
    EXPECT_TRUE(with(count, setKey));
    EXPECT_EQ(fault.count, 3) << "the file before and after it has its name, and the folder";
}

TEST_F(Faults, AFolderThatCannotBeOpenedIsNotSynced) {
    Fault count;
    count.call = "openat";
    ASSERT_EQ(writeWith(count), FileResult::Ok);
    const int last = fault.count; // once the file is there, its folder is opened to be synced
    for (const int error : {EACCES, EMFILE, EIO}) {
        fs::remove(file);
        Fault wanted = failAt("openat", error);
        wanted.at = last;
        EXPECT_NE(writeWith(wanted), FileResult::Ok) << error;
        EXPECT_EQ(get(file), "new");
    }
}

TEST_F(Faults, AProfileSurvivesAnyFailure) {
    for (const auto write : ways)
        surviveAnyFailure(write);
    put(ini, oldText);
    with({}, setKey);
    for (const auto& call : {"openat", "read", "write", "fsync", "renameat", "close"})
        EXPECT_EQ(fault.seen.count(call), 1U) << call;
}

TEST_F(Faults, AProfileIsSyncedOnceMoreUnderItsName) {
    for (const int at : {2, 3}) { // the file, then its folder
        put(ini, oldText);
        Fault wanted = failAt("fsync", EIO);
        wanted.at = at;
        EXPECT_FALSE(with(wanted, setKey)) << at;
        EXPECT_EQ(get(ini), newText) << "the new file has its name by then";
    }
}

TEST_F(Faults, AProfileSurvivesAFullDisk) {
    put(ini, oldText);
    const auto before = entries(folder);
    Fault wanted = failAt("write", ENOSPC);
    wanted.largestWrite = 1000;
    wanted.at = 3; // in the middle of the text
    wanted.always = true;
    EXPECT_FALSE(with(wanted, setKey));
    EXPECT_EQ(get(ini), oldText);
    EXPECT_EQ(entries(folder), before);
}

TEST_F(Faults, AProfileSurvivesTheEndOfTheProcess) {
    for (const auto write : ways)
        surviveTheEnd(write);
}
