#include "platform/shell.h"

#include "tests/conformance/environment.h"

#include <gtest/gtest.h>

#include <fstream>

using conformance::Drives;
using namespace platform;

namespace {

int open(std::string_view file) {
    return shellExecute(0, "open", file, "", "", showNormal);
}

class Shell : public testing::Test {
protected:
    Drives drives;
    const std::filesystem::path stick = drives.add('E', DriveRemovable);
};

} // namespace

TEST_F(Shell, FileThatIsMissing) {
    EXPECT_EQ(open("E:\\missing.txt"), ShellFileNotFound);
    std::filesystem::create_directory(stick / "folder");
    EXPECT_EQ(open("E:\\folder\\missing.txt"), ShellFileNotFound);
}

TEST_F(Shell, FolderThatIsMissing) {
    const int code = open("E:\\missing\\file.txt");
    EXPECT_TRUE(code == ShellPathNotFound || code == ShellFileNotFound) << code;
}

TEST_F(Shell, DriveThatIsMissing) {
    const int code = open("Q:\\file.txt");
    EXPECT_TRUE(code == ShellPathNotFound || code == ShellFileNotFound) << code;
}

TEST_F(Shell, VerbThatNobodyKnows) {
    std::ofstream(stick / "file.txt") << "text";
    EXPECT_LE(shellExecute(0, "verb that nobody knows", "E:\\file.txt", "", "", showNormal), 32);
}

TEST_F(Shell, SchemeThatNobodyKnows) {
    EXPECT_LE(open("scheme-that-nobody-knows:address"), 32);
}
