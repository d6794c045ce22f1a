// The links that show the drive table to other programs.
#include "platform/linux/drive_links.h"

#include "tests/conformance/linux/temporary_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

using conformance::TemporaryFolder;
using platform::posix::DriveLinks;

namespace fs = std::filesystem;

namespace {

/// The id of a process that has been there.
pid_t deadProcess() {
    const pid_t child = fork();
    if (child == 0) _exit(0);
    waitpid(child, nullptr, 0);
    return child;
}

class DriveLinksOfAProcess : public testing::Test {
protected:
    DriveLinksOfAProcess() { setenv("XDG_RUNTIME_DIR", runtime.path().c_str(), 1); }

    fs::path folderOf(pid_t process) const { return common / std::to_string(process); }
    static bool isThere(const fs::path& path) { return fs::exists(fs::symlink_status(path)); }

    TemporaryFolder runtime;
    fs::path common = runtime.path() / "orvanta-usbtool";
    fs::path own = folderOf(getpid());
    DriveLinks links;
};

} // namespace

TEST_F(DriveLinksOfAProcess, AreTheUsersAlone) {
    links.show({{'E', "/dev/sdb1"}});
    EXPECT_EQ(fs::read_symlink(own / "e:"), "/dev/sdb1");
    EXPECT_EQ(fs::status(common).permissions(), fs::perms::owner_all);
    EXPECT_EQ(fs::status(own).permissions(), fs::perms::owner_all);
}

// Else a program that it starts would go by the letters of another one.
TEST_F(DriveLinksOfAProcess, HaveAFolderWithoutADrive) {
    links.show({});
    EXPECT_TRUE(fs::is_directory(own));
    EXPECT_TRUE(fs::is_empty(own));
}

TEST_F(DriveLinksOfAProcess, LeaveThoseOfAnotherAlone) {
    const fs::path others = folderOf(getppid());
    fs::create_directories(others);
    fs::create_symlink("/dev/sdc1", others / "e:");
    links.show({{'E', "/dev/sdb1"}});
    EXPECT_EQ(fs::read_symlink(others / "e:"), "/dev/sdc1");
    links.remove();
    EXPECT_FALSE(isThere(own));
    EXPECT_EQ(fs::read_symlink(others / "e:"), "/dev/sdc1");
}

TEST_F(DriveLinksOfAProcess, TakeThoseOfTheDeadAway) {
    const fs::path left = folderOf(deadProcess());
    fs::create_directories(left);
    fs::create_symlink("/dev/sdc1", left / "e:");
    fs::create_directory(common / "0");
    fs::create_directory(common / "12x");
    links.show({});
    EXPECT_FALSE(isThere(left));
    EXPECT_TRUE(isThere(common / "0")) << "no process";
    EXPECT_TRUE(isThere(common / "12x")) << "no process";
}

TEST_F(DriveLinksOfAProcess, AreSetRightWhenSomebodyChangedThem) {
    const DriveLinks::Targets targets = {{'E', "/dev/sdb1"}, {'F', "/dev/sdc1"}};
    links.show(targets);
    fs::remove(own / "e:");
    fs::remove(own / "f:");
    fs::create_symlink("/dev/sda1", own / "f:");
    fs::create_symlink("/dev/sda1", own / "g:");
    links.show(targets);
    EXPECT_EQ(fs::read_symlink(own / "e:"), "/dev/sdb1");
    EXPECT_EQ(fs::read_symlink(own / "f:"), "/dev/sdc1");
    EXPECT_FALSE(isThere(own / "g:"));
    fs::remove_all(common);
    links.show(targets);
    EXPECT_EQ(fs::read_symlink(own / "e:"), "/dev/sdb1");
}

TEST_F(DriveLinksOfAProcess, AreSetWhateverAnEarlierTryLeftBehind) {
    fs::create_directories(own);
    fs::create_symlink("/dev/sda1", own / "e:new");
    links.show({{'E', "/dev/sdb1"}});
    EXPECT_EQ(fs::read_symlink(own / "e:"), "/dev/sdb1");
    EXPECT_FALSE(isThere(own / "e:new"));
}

TEST_F(DriveLinksOfAProcess, AreGoneInTheEnd) {
    links.show({{'E', "/dev/sdb1"}});
    fs::create_symlink("/dev/sda1", own / "f:new");
    links.remove();
    EXPECT_FALSE(isThere(common));
}
