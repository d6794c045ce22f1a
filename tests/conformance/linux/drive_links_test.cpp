// The links that show the drive table to other programs.
#include "platform/linux/drives/drive_links.h"

#include "tests/conformance/linux/temporary_folder.h"
#include "tests/support/waiting_process.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using conformance::TemporaryFolder;
using platform::linux::DriveLinks;
using support::WaitingProcess;

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
    /// One that a program like this one could have made, with the folders that lead there.
    void makeFolder(const fs::path& path) const {
        for (const fs::path& part : {common, path}) {
            fs::create_directory(part);
            fs::permissions(part, fs::perms::owner_all);
        }
    }
    /// There are no links, and one line tells it, however often they are to be shown.
    void expectRefused() {
        testing::internal::CaptureStderr();
        links.show({{'E', {"/dev/sdb1"}}});
        links.show({{'E', {"/dev/sdb1"}}});
        links.remove();
        const std::string told = testing::internal::GetCapturedStderr();
        EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 1) << told;
        EXPECT_NE(told.find(runtime.path()), std::string::npos) << told;
        EXPECT_FALSE(isThere(own));
    }

    TemporaryFolder runtime;
    fs::path common = runtime.path() / "orvanta-usbtool";
    fs::path own = folderOf(getpid());
    DriveLinks links;
};

} // namespace

TEST_F(DriveLinksOfAProcess, AreTheUsersAlone) {
    links.show({{'E', {"/dev/sdb1"}}});
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
    const WaitingProcess another;
    const fs::path others = folderOf(another.id());
    makeFolder(others);
    fs::create_symlink("/dev/sdc1", others / "e:");
    links.show({{'E', {"/dev/sdb1"}}});
    EXPECT_EQ(fs::read_symlink(others / "e:"), "/dev/sdc1");
    links.remove();
    EXPECT_FALSE(isThere(own));
    EXPECT_EQ(fs::read_symlink(others / "e:"), "/dev/sdc1");
}

TEST_F(DriveLinksOfAProcess, TakeThoseOfTheDeadAway) {
    const fs::path left = folderOf(deadProcess());
    makeFolder(left);
    for (const char* name : {"e:", "e:.disk", "e:new", "e:.disknew"})
        fs::create_symlink("/dev/sdc1", left / name);
    fs::create_directory(common / "0");
    fs::create_directory(common / "12x");
    links.show({});
    EXPECT_FALSE(isThere(left));
    EXPECT_TRUE(isThere(common / "0")) << "no process";
    EXPECT_TRUE(isThere(common / "12x")) << "no process";
}

/// Ids are used again: root may signal everybody's processes, and others learn that this one is none of
/// theirs.
TEST_F(DriveLinksOfAProcess, TakeThoseAwayOfWhichTheNumberIsAnotherUsersByNow) {
    std::optional<WaitingProcess> others;
    if (geteuid() == 0) others.emplace(support::nobody);
    const pid_t stranger = others ? others->id() : 1;
    struct stat info {};
    ASSERT_EQ(stat(("/proc/" + std::to_string(stranger)).c_str(), &info), 0);
    if (info.st_uid == geteuid()) GTEST_SKIP() << "here even the first process is the user's";
    const fs::path left = folderOf(stranger);
    makeFolder(left);
    fs::create_symlink("/dev/sdc1", left / "e:");
    links.show({});
    EXPECT_FALSE(isThere(left));
}

TEST_F(DriveLinksOfAProcess, AreSetRightWhenSomebodyChangedThem) {
    const DriveLinks::Targets targets = {{'E', {"/dev/sdb1"}}, {'F', {"/dev/sdc1"}}};
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
    makeFolder(own);
    fs::create_symlink("/dev/sda1", own / "e:new");
    links.show({{'E', {"/dev/sdb1"}}});
    EXPECT_EQ(fs::read_symlink(own / "e:"), "/dev/sdb1");
    EXPECT_FALSE(isThere(own / "e:new"));
}

TEST_F(DriveLinksOfAProcess, AreGoneInTheEnd) {
    links.show({{'E', {"/dev/sdb1"}}});
    fs::create_symlink("/dev/sda1", own / "f:new");
    links.remove();
    EXPECT_FALSE(isThere(common));
}

TEST_F(DriveLinksOfAProcess, TellWhichDiskIsMeant) {
    links.show({{'E', {"/dev/sdb1", "sequence=7"}}, {'F', {"/srv"}}});
    EXPECT_EQ(fs::read_symlink(own / "e:.disk"), "sequence=7");
    EXPECT_FALSE(isThere(own / "f:.disk"));
    links.show({{'E', {"/dev/sdb1", "sequence=8"}}});
    EXPECT_EQ(fs::read_symlink(own / "e:"), "/dev/sdb1");
    EXPECT_EQ(fs::read_symlink(own / "e:.disk"), "sequence=8");
    links.show({{'E', {"/srv"}}});
    EXPECT_EQ(fs::read_symlink(own / "e:"), "/srv");
    EXPECT_FALSE(isThere(own / "e:.disk"));
    links.show({{'E', {"/dev/sdb1", "sequence=8"}}});
    links.show({});
    EXPECT_TRUE(fs::is_empty(own));
    links.show({{'E', {"/dev/sdb1", "sequence=8"}}});
    links.remove();
    EXPECT_FALSE(isThere(common));
}

TEST_F(DriveLinksOfAProcess, FollowNoLink) {
    const TemporaryFolder elsewhere;
    const fs::path precious = elsewhere.path() / std::to_string(deadProcess());
    fs::create_directory(precious);
    std::ofstream(precious / "file") << "text";
    fs::create_directory_symlink(elsewhere.path(), common);
    expectRefused();
    EXPECT_TRUE(isThere(precious / "file"));
    EXPECT_TRUE(isThere(common)) << "not its own";
}

TEST_F(DriveLinksOfAProcess, FollowNoLinkInTheirOwnPlace) {
    const TemporaryFolder elsewhere;
    makeFolder(common);
    fs::create_symlink("/dev/sda1", elsewhere.path() / "e:");
    fs::create_directory_symlink(elsewhere.path(), own);
    links.show({{'F', {"/dev/sdb1"}}});
    links.remove();
    EXPECT_TRUE(isThere(elsewhere.path() / "e:"));
    EXPECT_FALSE(isThere(elsewhere.path() / "f:"));
}

TEST_F(DriveLinksOfAProcess, NeedAFolderThatIsTheUsersAlone) {
    makeFolder(common);
    fs::permissions(common, fs::perms::group_write | fs::perms::others_all, fs::perm_options::add);
    expectRefused();
}

TEST_F(DriveLinksOfAProcess, NeedARuntimeDirectoryThatNobodyElseMayWriteTo) {
    fs::permissions(runtime.path(), fs::perms::all);
    expectRefused();
    EXPECT_FALSE(isThere(common));
}

TEST_F(DriveLinksOfAProcess, AreNotInAFolderOfAnotherUser) {
    constexpr uid_t another = 65534;
    if (geteuid() != 0) GTEST_SKIP() << "only root may give folders away";
    makeFolder(common);
    ASSERT_EQ(chown(common.c_str(), another, another), 0);
    expectRefused();
    fs::remove(common);
    ASSERT_EQ(chown(runtime.path().c_str(), another, another), 0);
    links = {};
    expectRefused();
    EXPECT_FALSE(isThere(common));
}

TEST_F(DriveLinksOfAProcess, TakeNothingAwayThatTheyDidNotMake) {
    const TemporaryFolder elsewhere;
    fs::create_symlink("/dev/sda1", elsewhere.path() / "e:");
    const fs::path left = folderOf(deadProcess());
    makeFolder(left);
    fs::create_symlink("/dev/sda1", left / "e:");
    fs::create_symlink("/dev/sda1", left / "link");
    std::ofstream(left / "f:") << "text";
    const fs::path linked = folderOf(deadProcess());
    fs::create_directory_symlink(elsewhere.path(), linked);
    links.show({});
    EXPECT_FALSE(isThere(left / "e:"));
    EXPECT_TRUE(isThere(left / "link"));
    EXPECT_TRUE(isThere(left / "f:"));
    EXPECT_TRUE(isThere(linked));
    EXPECT_TRUE(isThere(elsewhere.path() / "e:"));
    std::ofstream(own / "file") << "text";
    links.remove();
    EXPECT_TRUE(isThere(own / "file"));
}

TEST_F(DriveLinksOfAProcess, NeedNoRuntimeDirectory) {
    setenv("XDG_RUNTIME_DIR", (runtime.path() / "missing").c_str(), 1);
    testing::internal::CaptureStderr();
    links.show({{'E', {"/dev/sdb1"}}});
    links.remove();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}
