// Whose letters count, when programs run side by side.
#include "tools/fat32format/linux/link_table.h"

#include "tests/support/waiting_process.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

using namespace fat32format;
using support::nobody;
using Child = support::WaitingProcess;

namespace fs = std::filesystem;

namespace {

class LinkTableOf : public testing::Test {
protected:
    LinkTableOf() {
        std::string name = fs::temp_directory_path() / "link-table-XXXXXX";
        if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
        base = name;
        gone.end();
    }
    ~LinkTableOf() override {
        std::error_code ignored;
        fs::remove_all(base, ignored);
    }

    static void makeFolder(const fs::path& folder) {
        fs::create_directory(folder);
        fs::permissions(folder, fs::perms::owner_all);
    }
    fs::path folderOf(const Child& process) const { return folderOf(process.id()); }
    fs::path folderOf(pid_t process) const { return common() / std::to_string(process); }
    fs::path show(const Child& process) const { return show(process.id()); }
    fs::path show(pid_t process) const {
        makeFolder(common());
        makeFolder(folderOf(process));
        return folderOf(process);
    }
    fs::path common() const { return base / "orvanta-usbtool"; }
    TablePlace own() const { return {common(), geteuid()}; }
    LinkTable tableFor(const Child& parent) const { return findLinkTable(own(), {}, parent.id()); }

    /// For each the folder, or else the reason, never both.
    std::string find(const Child& parent, const std::optional<TablePlace>& caller = {}) const {
        const LinkTable table = findLinkTable(own(), caller, parent.id());
        EXPECT_NE(table.folder().empty(), table.problem().empty());
        return table.folder().empty() ? table.problem() : table.folder().string();
    }
    static bool says(const std::string& text, const std::string& part) {
        return text.find(part) != std::string::npos;
    }

    fs::path base;
    Child one;
    Child two;
    Child shell; ///< shows no table
    Child gone;
};

} // namespace

TEST_F(LinkTableOf, ParentBesideOthers) {
    show(one);
    show(two);
    EXPECT_EQ(find(one), folderOf(one));
    EXPECT_EQ(find(two), folderOf(two));
}

TEST_F(LinkTableOf, OnlyOneByHand) {
    show(one);
    show(gone);
    fs::create_directory(common() / "e:");
    EXPECT_EQ(find(shell), folderOf(one));
}

TEST_F(LinkTableOf, SeveralByHand) {
    show(one);
    show(two);
    EXPECT_TRUE(says(find(shell), "runs more than once"));
}

TEST_F(LinkTableOf, NumberThatIsAnotherUsersByNow) {
    std::optional<Child> others;
    if (geteuid() == 0) others.emplace(nobody);
    const pid_t stranger = others ? others->id() : 1;
    struct stat info {};
    ASSERT_EQ(stat(("/proc/" + std::to_string(stranger)).c_str(), &info), 0);
    if (info.st_uid == geteuid()) GTEST_SKIP() << "here even the first process is the user's";
    show(stranger);
    EXPECT_TRUE(says(find(shell), "does not run"));
    show(one);
    EXPECT_EQ(find(shell), folderOf(one));
    EXPECT_EQ(findLinkTable(own(), {}, stranger).folder(), folderOf(one)) << "nor as the parent";
}

TEST_F(LinkTableOf, NobodyByHand) {
    EXPECT_TRUE(says(find(shell), "does not run"));
    makeFolder(common());
    EXPECT_TRUE(says(find(shell), "does not run"));
    show(gone);
    EXPECT_TRUE(says(find(shell), "does not run"));
}

TEST_F(LinkTableOf, FolderThatOthersMayUse) {
    const fs::path own = show(one);
    for (const fs::path& folder : {own, common()}) {
        for (const fs::perms others : {fs::perms::group_write, fs::perms::others_write, fs::perms::group_read,
                                       fs::perms::others_exec}) {
            fs::permissions(folder, fs::perms::owner_all | others);
            EXPECT_TRUE(says(find(one), "Others than the user")) << folder;
            EXPECT_TRUE(says(find(shell), "Others than the user")) << folder;
        }
        fs::permissions(folder, fs::perms::owner_all);
        EXPECT_EQ(find(one), own);
    }
}

TEST_F(LinkTableOf, FolderThatIsElsewhere) {
    show(two);
    fs::create_directory_symlink(folderOf(two), folderOf(one));
    EXPECT_TRUE(says(find(one), "Others than the user"));
}

TEST_F(LinkTableOf, CommonFolderThatIsElsewhere) {
    show(one);
    fs::rename(common(), base / "elsewhere");
    fs::create_directory_symlink(base / "elsewhere", common());
    EXPECT_TRUE(says(find(one), "Others than the user"));
    EXPECT_TRUE(says(find(shell), "Others than the user"));
}

TEST_F(LinkTableOf, FileInThePlaceOfAFolder) {
    makeFolder(common());
    std::ofstream(folderOf(one)) << "x";
    EXPECT_TRUE(says(find(one), "Others than the user"));
}

TEST_F(LinkTableOf, DriveAndItsDisk) {
    const fs::path folder = show(one);
    fs::create_symlink("/dev/null", folder / "e:");
    fs::create_symlink("sequence=7,size=512,serial=A%20B", folder / "e:.disk");
    const LinkTable table = tableFor(one);
    const auto target = table.target('E');
    ASSERT_TRUE(target.has_value());
    EXPECT_EQ(target->node, "/dev/null");
    EXPECT_EQ(target->disk, (DiskIdentity{7, 512, "A B"}));
    EXPECT_FALSE(table.target('F').has_value());
}

TEST_F(LinkTableOf, DriveWithoutADiskThatCanBeTold) {
    const fs::path folder = show(one);
    fs::create_symlink("/dev/null", folder / "e:");
    const LinkTable table = tableFor(one);
    EXPECT_FALSE(table.target('E')->disk.has_value());
    std::ofstream(folder / "e:.disk") << "sequence=7,size=512,serial=A";
    EXPECT_FALSE(table.target('E')->disk.has_value()) << "no link";
    fs::remove(folder / "e:.disk");
    fs::create_symlink("sequence=7,size=512", folder / "e:.disk");
    EXPECT_FALSE(table.target('E')->disk.has_value()) << "half of it";
}

/// The folder is looked up once: whoever can exchange it afterwards does not change what the letter means.
TEST_F(LinkTableOf, FolderThatIsExchangedAfterwards) {
    const fs::path folder = show(one);
    fs::create_symlink("/dev/null", folder / "e:");
    const LinkTable table = tableFor(one);
    fs::rename(folder, base / "away");
    show(one);
    fs::create_symlink("/dev/zero", folder / "e:");
    EXPECT_EQ(table.target('E')->node, "/dev/null");
}

TEST_F(LinkTableOf, FolderOfAnotherUser) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can give a folder away";
    const fs::path own = show(one);
    for (const fs::path& folder : {own, common()}) {
        ASSERT_EQ(chown(folder.c_str(), nobody, nobody), 0);
        EXPECT_TRUE(says(find(one), "Others than the user")) << folder;
        ASSERT_EQ(chown(folder.c_str(), 0, 0), 0);
    }
}

namespace {

/// Root, whom the user "nobody" has made so by pkexec, and the places of both.
class LinkTableBehindPkexec : public LinkTableOf {
protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "only root can give a folder away";
        makeFolder(caller.folder);
        give(caller.folder);
        users.emplace(nobody);
        users2.emplace(nobody);
    }
    fs::path showCallers(const Child& process) const {
        const fs::path folder = caller.folder / std::to_string(process.id());
        makeFolder(folder);
        give(folder);
        return folder;
    }
    void give(const fs::path& folder) const {
        ASSERT_EQ(chown(folder.c_str(), caller.owner, caller.owner), 0);
    }
    std::string find(const Child& parent) const { return LinkTableOf::find(parent, caller); }

    const TablePlace caller = {base / "callers", nobody};
    std::optional<Child> users;
    std::optional<Child> users2;
};

} // namespace

TEST_F(LinkTableBehindPkexec, TheCallersProgramByHand) {
    const fs::path callers = showCallers(*users);
    EXPECT_EQ(find(shell), callers);
    show(two);
    EXPECT_EQ(find(shell), callers) << "beside one of root's";
}

/// Root may send a signal to every process: that it is there does not make it the caller's.
TEST_F(LinkTableBehindPkexec, NumberThatIsRootsByNow) {
    showCallers(one);
    EXPECT_TRUE(says(find(shell), "does not run"));
    EXPECT_TRUE(says(find(one), "does not run")) << "nor as the parent";
    const fs::path callers = showCallers(*users);
    EXPECT_EQ(find(shell), callers);
}

TEST_F(LinkTableBehindPkexec, RootsProgramWhenTheCallerHasNone) {
    const fs::path roots = show(two);
    showCallers(gone);
    EXPECT_EQ(find(shell), roots);
    fs::remove_all(caller.folder);
    EXPECT_EQ(find(shell), roots);
}

TEST_F(LinkTableBehindPkexec, TheParentWhoeverHasStartedIt) {
    const fs::path roots = show(two);
    const fs::path callers = showCallers(*users);
    EXPECT_EQ(find(two), roots);
    EXPECT_EQ(find(*users), callers);
    showCallers(two); // what a user shows for a process of root's does not count
    EXPECT_EQ(find(two), roots);
}

TEST_F(LinkTableBehindPkexec, NoTableIsTakenInThePlaceOfOneThatCannotBeUsed) {
    show(two);
    showCallers(*users);
    for (const fs::path& place : {common(), caller.folder}) {
        fs::permissions(place, fs::perms::owner_all | fs::perms::others_write);
        EXPECT_TRUE(
            says(find(shell), "Others than the user may change the table of drives in " + place.string()));
        fs::permissions(place, fs::perms::owner_all);
    }
    const fs::path callers = showCallers(*users2);
    EXPECT_EQ(find(*users2), callers);
    EXPECT_TRUE(says(find(gone), "runs more than once"));
}

TEST_F(LinkTableBehindPkexec, NobodyElsesProgram) {
    showCallers(*users);
    const LinkTable table = findLinkTable(own(), TablePlace{caller.folder, caller.owner - 1}, shell.id());
    EXPECT_TRUE(says(table.problem(), "Others than the user"));
}

TEST_F(LinkTableBehindPkexec, NobodysProgram) {
    EXPECT_TRUE(says(find(shell), "does not run"));
}
