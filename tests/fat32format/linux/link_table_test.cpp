// Whose letters count, when programs run side by side.
#include "tools/fat32format/linux/link_table.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

using namespace fat32format;

namespace fs = std::filesystem;

namespace {

/// A process that does nothing until it is ended.
class Child {
public:
    Child() : id_(fork()) {
        if (id_ != 0) return;
        alarm(60); // should the test never get to its end
        for (;;)
            pause();
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child() { end(); }

    pid_t id() const { return id_; }
    void end() {
        if (ended_) return;
        kill(id_, SIGKILL);
        waitpid(id_, nullptr, 0);
        ended_ = true;
    }

private:
    pid_t id_;
    bool ended_ = false;
};

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
    fs::path folderOf(const Child& process) const { return common() / std::to_string(process.id()); }
    fs::path show(const Child& process) const {
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
        ASSERT_EQ(chown(folder.c_str(), 65534, 65534), 0);
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

    const TablePlace caller = {base / "callers", 65534};
};

} // namespace

TEST_F(LinkTableBehindPkexec, TheCallersProgramByHand) {
    const fs::path callers = showCallers(one);
    EXPECT_EQ(find(shell), callers);
    show(two);
    EXPECT_EQ(find(shell), callers) << "beside one of root's";
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
    const fs::path callers = showCallers(one);
    EXPECT_EQ(find(two), roots);
    EXPECT_EQ(find(one), callers);
    showCallers(two); // what a user shows for a process of root's does not count
    EXPECT_EQ(find(two), roots);
}

TEST_F(LinkTableBehindPkexec, NoTableIsTakenInThePlaceOfOneThatCannotBeUsed) {
    show(two);
    showCallers(one);
    for (const fs::path& place : {common(), caller.folder}) {
        fs::permissions(place, fs::perms::owner_all | fs::perms::others_write);
        EXPECT_TRUE(
            says(find(shell), "Others than the user may change the table of drives in " + place.string()));
        fs::permissions(place, fs::perms::owner_all);
    }
    showCallers(shell);
    EXPECT_EQ(find(shell), caller.folder / std::to_string(shell.id()));
    EXPECT_TRUE(says(find(gone), "runs more than once"));
}

TEST_F(LinkTableBehindPkexec, NobodyElsesProgram) {
    showCallers(one);
    const LinkTable table = findLinkTable(own(), TablePlace{caller.folder, caller.owner - 1}, shell.id());
    EXPECT_TRUE(says(table.problem(), "Others than the user"));
}

TEST_F(LinkTableBehindPkexec, NobodysProgram) {
    EXPECT_TRUE(says(find(shell), "does not run"));
}
