// Where the settings are when the program folder is not the user's: asked as a user without rights.
#include "platform/program_folder.h"

#include "build_choices.h"
#include "platform/files.h"
#include "tests/conformance/scratch_files.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>

using namespace platform;
using namespace conformance;
namespace fs = std::filesystem;

namespace {

constexpr uid_t nobody = 65534;

class SettingsFolder : public testing::Test {
protected:
    void SetUp() override {
        std::string name = fs::temp_directory_path() / ("settings-" + std::string(6, 'X'));
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        base = name;
    }
    void TearDown() override { fs::remove_all(base); }

    /// Runs in a process of a user who may write nothing but `base`; false when an expectation failed there.
    bool asUser(const std::function<void()>& body) {
        if (chown(base.c_str(), nobody, nobody) != 0) return false;
        const pid_t child = fork();
        if (child == 0) {
            unsetenv("XDG_CONFIG_HOME");
            setenv("HOME", base.c_str(), 1);
            const bool dropped = setgid(nobody) == 0 && setuid(nobody) == 0;
            if (dropped) body();
            _exit(dropped && !testing::Test::HasFailure() ? 0 : 1);
        }
        int status = 0;
        return waitpid(child, &status, 0) == child && status == 0;
    }

    static unsigned mode(const fs::path& path) {
        struct stat info {};
        return stat(path.c_str(), &info) == 0 ? info.st_mode & 07777U : 0U;
    }

    fs::path base;
};

#define NEEDS_ROOT()                                                                                         \
    if (geteuid() != 0) GTEST_SKIP() << "only root can become another user"

} // namespace

TEST_F(SettingsFolder, IsInTheUsersConfigurationFolder) {
    NEEDS_ROOT();
    EXPECT_TRUE(asUser([this] {
        const fs::path expected = base / ".config" / "orvanta-usbtool";
        EXPECT_EQ(settingsFolder(), expected);
        EXPECT_EQ(mode(expected), 0700U);
        EXPECT_EQ(mode(base / ".config"), 0700U);
        EXPECT_EQ(settingsFolder(), expected) << "a second time";

        const std::string file = settingsFolder() + "\\Settings.ini";
        EXPECT_EQ(writeWholeFile(file, "text"), FileResult::Ok);
        EXPECT_EQ(get(expected / "Settings.ini"), "text");
        EXPECT_EQ(fileLength(settingsFolder() + R"(\..\..\Settings.ini)"), 4U)
            << "\"..\" stops at the folder";
    }));
}

TEST_F(SettingsFolder, FollowsTheConfigurationVariable) {
    NEEDS_ROOT();
    EXPECT_TRUE(asUser([this] {
        setenv("XDG_CONFIG_HOME", (base / "deep" / "er" / "").c_str(), 1);
        EXPECT_EQ(settingsFolder(), base / "deep" / "er" / "orvanta-usbtool");
        EXPECT_TRUE(fs::is_directory(base / "deep" / "er" / "orvanta-usbtool"));
        setenv("XDG_CONFIG_HOME", "relative", 1);
        EXPECT_EQ(settingsFolder(), base / ".config" / "orvanta-usbtool") << "a relative path does not count";
    }));
}

TEST_F(SettingsFolder, AProgramFolderOfAnothersSettingsIsNotWritable) {
    NEEDS_ROOT();
    if (!base::portable) GTEST_SKIP() << "this build is not portable";
    const fs::path program = programFolder();
    const auto before = fs::status(program).permissions();
    fs::permissions(program, fs::perms::others_write, fs::perm_options::add);
    EXPECT_TRUE(asUser([&program] { EXPECT_EQ(settingsFolder(), program); }));
    put(program / "Settings.ini", "of another user");
    EXPECT_TRUE(asUser([this] { EXPECT_EQ(settingsFolder(), base / ".config" / "orvanta-usbtool"); }));
    fs::remove(program / "Settings.ini");
    fs::permissions(program, before);
}

TEST_F(SettingsFolder, AUserWithoutAWritableHomeGetsNoCrash) {
    NEEDS_ROOT();
    EXPECT_TRUE(asUser([] {
        setenv("HOME", "/proc/missing", 1);
        EXPECT_EQ(settingsFolder(), "/proc/missing/.config/orvanta-usbtool");
        EXPECT_NE(writeWholeFile(settingsFolder() + "\\Settings.ini", "x"), FileResult::Ok);
    }));
}

TEST_F(SettingsFolder, FilesOfOthersAreDenied) {
    NEEDS_ROOT();
    const std::string own = programFolder();
    put(fs::path(own) / "mine.tmp", "mine");
    fs::permissions(fs::path(own) / "mine.tmp", fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_TRUE(asUser([&own] {
        std::string contents;
        EXPECT_EQ(readWholeFile(own + "\\mine.tmp", contents), FileResult::PermissionDenied);
        EXPECT_EQ(writeWholeFile(own + "\\mine.tmp", "x"), FileResult::PermissionDenied);
        EXPECT_EQ(writeWholeFile(own + "\\new.tmp", "x"), FileResult::PermissionDenied);
        EXPECT_EQ(deleteFile(own + "\\mine.tmp"), FileResult::PermissionDenied);
        EXPECT_EQ(fileAttributes(own + "\\mine.tmp"), FileArchive) << "the owner may write it";
    }));
    fs::remove(fs::path(own) / "mine.tmp");
}
