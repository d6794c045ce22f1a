// The settings of a build that is not portable, for those who have no home.
#include "platform/program_folder.h"

#include "build_choices.h"
#include "platform/files.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

using namespace platform;

static_assert(!base::portable);

TEST(InstalledSettings, OfSomebodyWithoutAHomeAreNowhere) {
    constexpr uid_t unknownUser = 54321;
    if (geteuid() != 0) GTEST_SKIP() << "only root can become another user";
    const pid_t child = fork();
    if (child == 0) {
        unsetenv("XDG_CONFIG_HOME");
        unsetenv("HOME");
        if (setuid(unknownUser) != 0) _exit(2);
        EXPECT_EQ(settingsFolder(), programFolder() + "/nobody");
        EXPECT_FALSE(std::filesystem::exists(settingsFolder()));
        EXPECT_EQ(writeWholeFile(settingsFolder() + "\\Settings.ini", "x"), FileResult::PathNotFound);
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST(InstalledSettings, OfRootAreRoots) {
    if (geteuid() != 0) GTEST_SKIP() << "only root may write into every folder";
    unsetenv("XDG_CONFIG_HOME");
    const std::string home = testing::TempDir() + "installed-root";
    setenv("HOME", home.c_str(), 1);
    EXPECT_EQ(settingsFolder(), home + "/.config/orvanta-usbtool");
    std::filesystem::remove_all(home);
}
