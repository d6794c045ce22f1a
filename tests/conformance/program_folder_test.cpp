#include "platform/program_folder.h"

#include "build_choices.h"
#include "platform/files.h"
#include "tests/conformance/environment.h"
#include "tests/conformance/scratch_files.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace platform;
using namespace conformance;
namespace fs = std::filesystem;

namespace {

bool endsInSeparator(const std::string& path) {
    return !path.empty() && (path.back() == '\\' || path.back() == '/');
}

} // namespace

TEST(ProgramFolder, HoldsTheProgram) {
    const fs::path folder = programFolder();
    EXPECT_TRUE(folder.is_absolute());
    const auto isProgram = [](const fs::directory_entry& entry) {
        return entry.path().stem() == "conformance_program_folder_test";
    };
    EXPECT_TRUE(std::any_of(fs::directory_iterator(folder), {}, isProgram)) << folder;
}

TEST(ProgramFolder, DoesNotEndInASeparator) {
    EXPECT_FALSE(endsInSeparator(programFolder()));
    EXPECT_FALSE(endsInSeparator(settingsFolder()));
}

TEST(ProgramFolder, DoesNotDependOnTheCurrentFolder) {
    const std::string before = programFolder();
    const fs::path current = fs::current_path();
    fs::current_path(fs::temp_directory_path());
    EXPECT_EQ(programFolder(), before);
    fs::current_path(current);
}

TEST(ProgramFolder, IsWhereTheSettingsAreWhenItIsWritable) {
    if (!base::portable) GTEST_SKIP() << "this build is not portable";
    EXPECT_EQ(settingsFolder(), programFolder());
}

TEST(ProgramFolder, ItsPathsAreUnderstood) {
    const std::string folder = programFolder();
    EXPECT_EQ(fileAttributes(folder), FileDirectory);
    EXPECT_EQ(fileAttributes(folder + "\\"), FileDirectory);
    EXPECT_EQ(writeWholeFile(folder + "\\own.tmp", "x"), FileResult::Ok);
    EXPECT_EQ(get(fs::path(folder) / "own.tmp"), "x");
    EXPECT_EQ(fileLength(folder + "/OWN.tmp"), 1U);
    EXPECT_EQ(fileLength(folder + R"(\..\..\own.tmp)"), 1U) << "\"..\" stops at the folder";
    EXPECT_EQ(deleteFile(folder + "\\own.tmp"), FileResult::Ok);
    EXPECT_EQ(fileAttributes(folder + "x\\own.tmp"), std::nullopt);
    EXPECT_EQ(writeWholeFile(folder + "\\NUL", "x"), FileResult::PathNotFound);
}
