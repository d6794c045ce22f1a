#include "platform/linux/base/runtime_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <unistd.h>

using namespace platform::linux;

TEST(RuntimeFolder, IsThatOfTheVariable) {
    setenv("XDG_RUNTIME_DIR", "/tmp/runtime", 1);
    EXPECT_EQ(runtimeFolder(), "/tmp/runtime");
    setenv("XDG_RUNTIME_DIR", "relative", 1);
    EXPECT_NE(runtimeFolder(), "relative");
}

TEST(RuntimeFolder, OfRootWithoutASessionIsTheSystems) {
    if (geteuid() != 0) GTEST_SKIP() << "it takes root";
    if (std::filesystem::exists("/run/user/0")) GTEST_SKIP() << "root has a session here";
    unsetenv("XDG_RUNTIME_DIR");
    EXPECT_EQ(runtimeFolder(), "/run");
}

TEST(RuntimeFolder, OfRootWithASessionIsThatOfTheSession) {
    if (geteuid() != 0) GTEST_SKIP() << "it takes root";
    if (!std::filesystem::exists("/run/user/0")) GTEST_SKIP() << "root has no session here";
    unsetenv("XDG_RUNTIME_DIR");
    EXPECT_EQ(runtimeFolder(), "/run/user/0");
}

/// Whether there is one or not: nobody else may use the system's.
TEST(RuntimeFolder, OfAUserIsTheUsualOne) {
    if (geteuid() == 0) GTEST_SKIP() << "it takes a user who is not root";
    unsetenv("XDG_RUNTIME_DIR");
    EXPECT_EQ(runtimeFolder(), "/run/user/" + std::to_string(getuid()));
}

TEST(RuntimeFolder, KnowsWhoIsBehindPkexecForRootAlone) {
    unsetenv("PKEXEC_UID");
    EXPECT_EQ(userBehindPkexec(), std::nullopt);
    setenv("PKEXEC_UID", "1000", 1);
    EXPECT_EQ(userBehindPkexec(), geteuid() == 0 ? std::optional<uid_t>(1000) : std::nullopt);
    for (const char* none : {"", "-1", "1000x", "99999999999"}) {
        setenv("PKEXEC_UID", none, 1);
        EXPECT_EQ(userBehindPkexec(), std::nullopt) << none;
    }
    unsetenv("PKEXEC_UID");
}
