// The locale comes from the user's environment, whatever the process has set.
#include "platform/user_locale.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>

using platform::decimalSeparator;
namespace fs = std::filesystem;

// glibc loses the list of folders that it makes of LOCPATH, a variable that only this test sets.
extern "C" const char* __lsan_default_suppressions();  // NOLINT(bugprone-reserved-identifier)
extern "C" const char* __lsan_default_suppressions() { // NOLINT(bugprone-reserved-identifier)
    return "leak:__argz_add_sep";
}

namespace {

/// Locales of its own, so that none need be installed.
class Locales : public testing::Test {
protected:
    static void SetUpTestSuite() {
        std::string name = fs::temp_directory_path() / ("locales-" + std::string(6, 'X'));
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        folder = name;
        const std::string make = "localedef --no-archive -i de_AT -f UTF-8 '" +
                                 (folder / "de_AT.UTF-8").string() + "' >/dev/null 2>&1";
        made = std::system(make.c_str()) == 0; // NOLINT(cert-env33-c): the test's own command
    }
    static void TearDownTestSuite() { fs::remove_all(folder); }

    void SetUp() override {
        for (const char* name : {"LC_ALL", "LC_NUMERIC", "LANG", "LANGUAGE"})
            unsetenv(name);
        setenv("LOCPATH", folder.c_str(), 1);
    }
    void TearDown() override { unsetenv("LOCPATH"); }

    static void set(const char* name, const char* value) { setenv(name, value, 1); }

    static fs::path folder;
    static bool made;
};

fs::path Locales::folder;
bool Locales::made = false;

} // namespace

TEST_F(Locales, WithoutAnyThereIsAPoint) {
    EXPECT_EQ(decimalSeparator(), ".");
    set("LANG", "C");
    EXPECT_EQ(decimalSeparator(), ".");
}

TEST_F(Locales, OneThatIsNotInstalledHasAPoint) {
    set("LANG", "xx_XX.UTF-8");
    EXPECT_EQ(decimalSeparator(), ".");
}

TEST_F(Locales, TheUsersOwn) {
    if (!made) GTEST_SKIP() << "the locale sources are not installed";
    set("LANG", "de_AT.UTF-8");
    EXPECT_EQ(decimalSeparator(), ",");
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C") << "the process keeps its own";
    set("LC_NUMERIC", "C");
    EXPECT_EQ(decimalSeparator(), ".");
    set("LC_ALL", "de_AT.UTF-8");
    EXPECT_EQ(decimalSeparator(), ",");
}
