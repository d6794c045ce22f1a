// Where the settings are in a build that is not portable, whoever may write into the program folder.
#include "platform/program_folder.h"

#include "build_choices.h"
#include "platform/files.h"
#include "tests/conformance/environment.h"
#include "tests/conformance/scratch_files.h"

#include <gtest/gtest.h>

using namespace platform;
using namespace conformance;
namespace fs = std::filesystem;

static_assert(!base::portable);

TEST(InstalledSettings, AreNotBesideTheProgramAlthoughTheyCouldBe) {
    const std::string beside = programFolder() + "\\Settings.ini";
    ASSERT_EQ(writeWholeFile(beside, "text"), FileResult::Ok);
    EXPECT_NE(settingsFolder(), programFolder());
    EXPECT_EQ(deleteFile(beside), FileResult::Ok);
}

TEST(InstalledSettings, AreInAFolderOfTheUsers) {
    const fs::path folder = settingsFolder();
    EXPECT_TRUE(folder.is_absolute());
    EXPECT_EQ(folder.filename(), "orvanta-usbtool");
    EXPECT_TRUE(fs::is_directory(folder));
    const std::string file = settingsFolder() + "\\installed.tmp";
    EXPECT_EQ(writeWholeFile(file, "text"), FileResult::Ok);
    EXPECT_EQ(get(folder / "installed.tmp"), "text");
    EXPECT_EQ(deleteFile(file), FileResult::Ok);
}
