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
    unsetenv("XDG_RUNTIME_DIR");
    const std::string usual = usualRuntimeFolder(getuid());
    const bool isRootWithout = geteuid() == 0 && !std::filesystem::exists(usual);
    EXPECT_EQ(runtimeFolder(), isRootWithout ? "/run" : usual);
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
