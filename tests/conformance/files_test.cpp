#include "platform/files.h"

#include "platform/program_folder.h"
#include "tests/conformance/environment.h"
#include "tests/conformance/known_difference.h"
#include "tests/conformance/scratch_files.h"

#include <gtest/gtest.h>

#include <chrono>

using namespace platform;
using namespace conformance;
namespace fs = std::filesystem;

namespace {

class Files : public testing::Test {
protected:
    Drives drives;
    fs::path stick = drives.add('E', DriveRemovable);
};

/// Names that no file can have, each of them somewhere in a path.
class BadName : public Files, public testing::WithParamInterface<std::string> {};

const std::string longName(300, 'x');

std::string manyFolders() {
    std::string path = R"(E:\)";
    while (path.size() < 40000)
        path += "folder\\";
    return path + "file";
}

} // namespace

// Attributes and length

TEST_F(Files, RootIsAFolder) {
    EXPECT_EQ(fileAttributes(R"(E:\)"), FileDirectory);
    EXPECT_EQ(fileAttributes("e:/"), FileDirectory);
    EXPECT_EQ(fileAttributes(R"(C:\)"), FileDirectory);
}

TEST_F(Files, AFolderHasTheFolderBit) {
    fs::create_directories(stick / "a" / "b");
    EXPECT_EQ(fileAttributes(R"(E:\a)"), FileDirectory);
    EXPECT_EQ(fileAttributes(R"(E:\a\b)"), FileDirectory);
    EXPECT_EQ(fileAttributes(R"(E:\a\b\)"), FileDirectory);
    EXPECT_EQ(fileLength(R"(E:\a)"), std::nullopt);
    EXPECT_EQ(fileLength(R"(E:\)"), std::nullopt);
}

TEST_F(Files, ANewFileHasTheArchiveBitAlone) {
    ASSERT_EQ(writeWholeFile(R"(E:\USB.ini)", "x"), FileResult::Ok);
    EXPECT_EQ(fileAttributes(R"(E:\USB.ini)"), FileArchive);
}

TEST_F(Files, AReadOnlyFileHasTheReadOnlyBit) {
    put(stick / "a.txt", "x");
    const ReadOnly guard(stick / "a.txt");
    EXPECT_EQ(fileAttributes(R"(E:\a.txt)"), FileArchive | FileReadOnly);
}

TEST_F(Files, WhatIsMissingHasNoAttributes) {
    put(stick / "file", "x");
    for (const std::string_view path : {R"(E:\missing)", R"(E:\missing\a)", R"(E:\file\a)", R"(E:\file\)",
                                        R"(X:\)", R"(X:\a)", "", "\\", "/", ":", "E", "1:\\", "file"}) {
        EXPECT_EQ(fileAttributes(path), std::nullopt) << path;
        EXPECT_EQ(fileLength(path), std::nullopt) << path;
    }
}

TEST_F(Files, LengthIsInBytes) {
    put(stick / "empty", "");
    put(stick / "some", std::string(70000, '\0'));
    EXPECT_EQ(fileLength(R"(E:\empty)"), 0U);
    EXPECT_EQ(fileLength(R"(E:\some)"), 70000U);
}

// Names

TEST_F(Files, NamesMatchRegardlessOfCase) {
    fs::create_directory(stick / named("Ordner Ä"));
    put(stick / named("Ordner Ä") / named("Größe Š.TXT"), "found");
    std::string contents;
    EXPECT_EQ(readWholeFile("e:\\oRDNER ä\\grÖße š.txt", contents), FileResult::Ok);
    EXPECT_EQ(contents, "found");
    EXPECT_EQ(fileLength("E:\\ORDNER Ä\\GRÖßE Š.txt"), 5U);
    EXPECT_EQ(fileAttributes("E:\\ordner a"), std::nullopt) << "an umlaut is not its letter";
}

TEST_F(Files, WritingUnderAnotherCaseWritesTheSameFile) {
    put(stick / "AutoRun.INF", "a long old text");
    EXPECT_EQ(writeWholeFile(R"(E:\autorun.inf)", "new"), FileResult::Ok);
    EXPECT_EQ(get(stick / "AutoRun.INF"), "new");
    EXPECT_EQ(entries(stick), 1);
}

TEST_F(Files, SlashesSeparateNamesToo) {
    fs::create_directory(stick / "a");
    put(stick / "a" / "b", "x");
    EXPECT_EQ(fileLength("E:/a/b"), 1U);
    EXPECT_EQ(fileLength(R"(E:\a/b)"), 1U);
    EXPECT_EQ(fileLength(R"(E:\\a\\\b)"), 1U);
}

TEST_F(Files, DotsAndBlanksAtTheEndOfANameDoNotCount) {
    put(stick / "a.txt", "x");
    EXPECT_EQ(fileLength(R"(E:\a.txt.)"), 1U);
    EXPECT_EQ(fileLength(R"(E:\a.txt .. )"), 1U);
    EXPECT_EQ(writeWholeFile(R"(E:\b. )", "x"), FileResult::Ok);
    EXPECT_TRUE(fs::exists(stick / "b"));
}

TEST_F(Files, DotDotStopsAtTheRoot) {
    fs::create_directories(stick / "a" / "b");
    put(stick / "file", "x");
    put(stick.parent_path() / "outside", "secret");
    EXPECT_EQ(fileLength(R"(E:\a\b\..\..\file)"), 1U);
    EXPECT_EQ(fileLength(R"(E:\a\.\..\file)"), 1U);
    EXPECT_EQ(fileLength(R"(E:\..\..\..\file)"), 1U);
    EXPECT_EQ(fileAttributes(R"(E:\..)"), FileDirectory);

    std::string contents;
    EXPECT_EQ(readWholeFile(R"(E:\..\outside)", contents), FileResult::FileNotFound);
    EXPECT_EQ(readWholeFile(R"(E:\a\..\..\outside)", contents), FileResult::FileNotFound);
    EXPECT_EQ(writeWholeFile("E:/../outside", "changed"), FileResult::Ok);
    EXPECT_EQ(get(stick.parent_path() / "outside"), "secret");
    EXPECT_EQ(get(stick / "outside"), "changed");
}

TEST_P(BadName, IsAPathNotFound) {
    put(stick / "a", "x");
    std::string contents = "old";
    const std::string path = "E:\\" + GetParam();
    EXPECT_EQ(fileAttributes(path), std::nullopt);
    EXPECT_EQ(fileLength(path), std::nullopt);
    EXPECT_EQ(readWholeFile(path, contents), FileResult::PathNotFound);
    EXPECT_EQ(contents, "");
    EXPECT_EQ(writeWholeFile(path, "x"), FileResult::PathNotFound);
    EXPECT_EQ(copyFile("E:\\a", path), FileResult::PathNotFound);
    EXPECT_EQ(copyFile(path, "E:\\b"), FileResult::PathNotFound);
    EXPECT_EQ(deleteFile(path), FileResult::PathNotFound);
    EXPECT_EQ(writeWholeFile(path + "\\file", "x"), FileResult::PathNotFound);
    EXPECT_EQ(entries(stick), 1);
    EXPECT_EQ(get(stick / "a"), "x");
}

INSTANTIATE_TEST_SUITE_P(Devices, BadName,
                         testing::Values("NUL", "nul", "NUL.txt", "nul.tar.gz", "NUL ", "NUL .txt", "NUL.",
                                         "CON", "Prn.ini", "AUX", "COM1", "com9.bin", "LPT1", "lpt9", "COM1.",
                                         "CONIN$", "conout$"));
INSTANTIATE_TEST_SUITE_P(Characters, BadName,
                         testing::Values("a<b", "a>b", "a:b", "a:", ":b", "a\"b", "a|b", "a?b", "a*b",
                                         "*.ini", "a\nb", "a\r", "\tb", "a\x01",
                                         "a\x1F"
                                         "b",
                                         std::string("a\0b", 3), std::string("a\0", 2), "E:\\a"));
INSTANTIATE_TEST_SUITE_P(Others, BadName,
                         testing::Values(longName, longName + "\\" + longName, longName + ".txt"));

TEST_F(Files, AlmostADeviceIsAFile) {
    for (const std::string name :
         {"NULL", "COM", "COM10", "LPT", "LPT0x", "CONSOLE", "xNUL", "a.NUL", "COMA", "AUX1"}) {
        EXPECT_EQ(writeWholeFile("E:\\" + name, name), FileResult::Ok) << name;
        EXPECT_EQ(get(stick / name), name);
    }
}

TEST_F(Files, UnusualNamesAreFiles) {
    for (const std::string name : {" leading blank", ".hidden", "a b", "a..b", "-r", "~", "%TEMP%", "$x",
                                   "a;b", "a=b", "[x]", "{x}", "'x'", "a,b", "100%", "ÄÖÜ€", "日本"}) {
        if (name == "日本" && knownDifference(Differs::AnsiFunctions, "no name outside the ANSI code page",
                                              "https://learn.microsoft.com/windows/win32/intl/code-pages"))
            continue;
        EXPECT_EQ(writeWholeFile("E:\\" + name, name), FileResult::Ok) << name;
        EXPECT_EQ(get(stick / named(name)), name);
    }
}

TEST_F(Files, APathThatIsTooLongIsNotFound) {
    std::string contents;
    EXPECT_EQ(readWholeFile(manyFolders(), contents), FileResult::PathNotFound);
    EXPECT_EQ(writeWholeFile(manyFolders(), "x"), FileResult::PathNotFound);
}

TEST_F(Files, AnEmptyNameNeverTouchesAFolder) {
    std::string contents;
    for (const std::string_view path : {R"(E:\)", R"(E:\\)", R"(E:\/)", "E:/", R"(E:\.)", R"(E:\..)"}) {
        EXPECT_EQ(readWholeFile(path, contents), FileResult::PathFileAccess) << path;
        EXPECT_EQ(writeWholeFile(path, "x"), FileResult::PathFileAccess) << path;
        EXPECT_EQ(deleteFile(path), FileResult::PathFileAccess) << path;
    }
    EXPECT_EQ(writeWholeFile("", "x"), FileResult::PathNotFound);
    EXPECT_TRUE(fs::is_directory(stick));
    EXPECT_EQ(entries(stick), 0);
}

// Reading

TEST_F(Files, ReadsBytesAsTheyAre) {
    for (const std::size_t size : {0U, 1U, 511U, 262144U, 262145U, 1000000U}) {
        put(stick / "data.bin", pattern(size));
        std::string contents = "old";
        EXPECT_EQ(readWholeFile(R"(E:\data.bin)", contents), FileResult::Ok);
        EXPECT_TRUE(contents == pattern(size)) << size;
    }
}

TEST_F(Files, ReadingTellsWhatIsMissing) {
    fs::create_directory(stick / "folder");
    put(stick / "file", "x");
    std::string contents = "old";
    EXPECT_EQ(readWholeFile(R"(E:\missing)", contents), FileResult::FileNotFound);
    EXPECT_EQ(contents, "");
    EXPECT_EQ(readWholeFile(R"(E:\missing\a)", contents), FileResult::PathNotFound);
    EXPECT_EQ(readWholeFile(R"(E:\file\a)", contents), FileResult::PathNotFound);
    EXPECT_EQ(readWholeFile(R"(E:\file\)", contents), FileResult::PathNotFound);
    EXPECT_EQ(readWholeFile(R"(E:\folder)", contents), FileResult::PathFileAccess);
}

TEST_F(Files, ADriveThatIsGoneIsNotReady) {
    put(stick / "a", "x");
    std::string contents;
    EXPECT_EQ(readWholeFile(R"(X:\a)", contents), FileResult::DiskNotReady);
    EXPECT_EQ(writeWholeFile(R"(X:\a)", "x"), FileResult::DiskNotReady);
    EXPECT_EQ(copyFile(R"(E:\a)", R"(X:\a)"), FileResult::DiskNotReady);
    EXPECT_EQ(copyFile(R"(X:\a)", R"(E:\a)"), FileResult::DiskNotReady);
    EXPECT_EQ(deleteFile(R"(X:\a)"), FileResult::DiskNotReady);

    drives.remove('E');
    EXPECT_EQ(readWholeFile(R"(E:\a)", contents), FileResult::DiskNotReady);
    EXPECT_EQ(fileAttributes(R"(E:\)"), std::nullopt);
}

TEST_F(Files, ADriveWithoutMediumIsNotReady) {
    put(stick / "a", "x");
    drives.removeMedium('E');
    std::string contents;
    EXPECT_EQ(readWholeFile(R"(E:\a)", contents), FileResult::DiskNotReady);
    EXPECT_EQ(writeWholeFile(R"(E:\a)", "x"), FileResult::DiskNotReady);
    EXPECT_EQ(fileAttributes(R"(E:\)"), std::nullopt);
    EXPECT_FALSE(fs::exists(stick));
}

// Writing

TEST_F(Files, WritesBytesAsTheyAre) {
    for (const std::size_t size : {1000000U, 512U, 0U, 1U}) {
        EXPECT_EQ(writeWholeFile(R"(E:\data.bin)", pattern(size)), FileResult::Ok);
        EXPECT_TRUE(get(stick / "data.bin") == pattern(size)) << size;
    }
    EXPECT_EQ(entries(stick), 1);
}

TEST_F(Files, WritingNeedsTheFolder) {
    put(stick / "file", "x");
    EXPECT_EQ(writeWholeFile(R"(E:\missing\a)", "x"), FileResult::PathNotFound);
    EXPECT_EQ(writeWholeFile(R"(E:\file\a)", "x"), FileResult::PathNotFound);
    EXPECT_EQ(writeWholeFile(R"(E:\new\)", "x"), FileResult::PathNotFound);
    EXPECT_EQ(entries(stick), 1);
}

TEST_F(Files, AFolderIsNotWritten) {
    fs::create_directory(stick / "folder");
    EXPECT_EQ(writeWholeFile(R"(E:\folder)", "x"), FileResult::PathFileAccess);
    EXPECT_EQ(writeWholeFile(R"(E:\folder\)", "x"), FileResult::PathFileAccess);
}

TEST_F(Files, AReadOnlyFileStaysAsItIs) {
    put(stick / "a", "old");
    const ReadOnly guard(stick / "a");
    EXPECT_EQ(writeWholeFile(R"(E:\a)", "new"), FileResult::PermissionDenied);
    EXPECT_EQ(deleteFile(R"(E:\a)"), FileResult::PermissionDenied);
    EXPECT_EQ(get(stick / "a"), "old");
}

TEST_F(Files, OnAFullDiskWhatWasWrittenStays) {
    constexpr std::size_t room = 256UL * 1024;
    const auto small = drives.addSmall('F', room);
    if (!small) GTEST_SKIP() << "this machine lets nobody make a small drive";
    const std::string data = pattern(3 * room);
    EXPECT_EQ(writeWholeFile(R"(F:\data)", data), FileResult::DiskFull);
    const std::string written = get(*small / "data");
    EXPECT_GT(written.size(), room / 2);
    EXPECT_TRUE(data.substr(0, written.size()) == written);
    EXPECT_EQ(writeWholeFile(R"(F:\more)", "x"), FileResult::DiskFull);

    EXPECT_EQ(deleteFile(R"(F:\data)"), FileResult::Ok);
    EXPECT_EQ(writeWholeFile(R"(F:\more)", "x"), FileResult::Ok);
    put(stick / "data", data);
    EXPECT_EQ(copyFile(R"(E:\data)", R"(F:\data)"), FileResult::DiskFull);
    const std::string copied = get(*small / "data");
    EXPECT_GT(copied.size(), room / 2);
    EXPECT_TRUE(data.substr(0, copied.size()) == copied);
}

// Copying

TEST_F(Files, CopiesBytesAsTheyAre) {
    for (const std::size_t size : {3000000U, 262144U, 1U, 0U}) {
        put(stick / "from", pattern(size));
        EXPECT_EQ(copyFile(R"(E:\from)", R"(E:\to)"), FileResult::Ok);
        EXPECT_TRUE(get(stick / "to") == pattern(size)) << size;
        EXPECT_TRUE(get(stick / "from") == pattern(size)) << size;
    }
}

TEST_F(Files, CopiesBetweenDrivesAndFromTheProgramFolder) {
    const fs::path other = drives.add('F', DriveFixed);
    put(stick / "a", "text");
    EXPECT_EQ(copyFile(R"(E:\a)", R"(F:\b)"), FileResult::Ok);
    EXPECT_EQ(get(other / "b"), "text");

    const std::string own = programFolder() + "\\copied.tmp";
    EXPECT_EQ(copyFile(R"(E:\a)", own), FileResult::Ok);
    EXPECT_EQ(copyFile(own, R"(E:\c)"), FileResult::Ok);
    EXPECT_EQ(get(stick / "c"), "text");
    EXPECT_EQ(deleteFile(own), FileResult::Ok);
    EXPECT_EQ(fileAttributes(own), std::nullopt);
}

TEST_F(Files, AReadOnlySourceMakesNoReadOnlyCopy) {
    put(stick / "from", "x");
    {
        const ReadOnly guard(stick / "from");
        EXPECT_EQ(copyFile(R"(E:\from)", R"(E:\to)"), FileResult::Ok);
    }
    EXPECT_EQ(fileAttributes(R"(E:\to)"), FileArchive);
    EXPECT_EQ(copyFile(R"(E:\from)", R"(E:\to)"), FileResult::Ok);
}

TEST_F(Files, ACopyReplacesAReadOnlyFile) {
    put(stick / "a", "a longer text of old");
    put(stick / "b", "new");
    const ReadOnly guard(stick / "a");
    EXPECT_EQ(copyFile(R"(E:\b)", R"(E:\a)"), FileResult::Ok);
    EXPECT_EQ(get(stick / "a"), "new");
    EXPECT_EQ(fileAttributes(R"(E:\a)"), FileArchive);
}

TEST_F(Files, CopyingTellsWhatIsMissing) {
    fs::create_directory(stick / "folder");
    put(stick / "a", "x");
    EXPECT_EQ(copyFile(R"(E:\missing)", R"(E:\b)"), FileResult::FileNotFound);
    EXPECT_EQ(copyFile(R"(E:\missing\a)", R"(E:\b)"), FileResult::PathNotFound);
    EXPECT_EQ(copyFile(R"(E:\a)", R"(E:\missing\b)"), FileResult::PathNotFound);
    EXPECT_EQ(copyFile(R"(E:\folder)", R"(E:\b)"), FileResult::PathFileAccess);
    EXPECT_EQ(copyFile(R"(E:\a)", R"(E:\folder)"), FileResult::PathFileAccess);
    EXPECT_EQ(copyFile(R"(E:\a)", R"(E:\)"), FileResult::PathFileAccess);
    EXPECT_EQ(entries(stick), 2);
}

TEST_F(Files, ACopyThatIsThereAlreadyMayBeLeftAlone) {
    const auto longAgo = fs::file_time_type::clock::now() - std::chrono::hours(48);
    bool untouched = false;
    const auto copy = [&untouched] {
        untouched = false;
        return copyFile(R"(E:\from)", R"(E:\to)", {}, &untouched);
    };
    put(stick / "from", "contents");
    EXPECT_EQ(copy(), FileResult::Ok);
    EXPECT_FALSE(untouched) << "there was none";
    fs::last_write_time(stick / "to", longAgo);
    const auto before = fs::last_write_time(stick / "to");
    EXPECT_EQ(copy(), FileResult::Ok);
    EXPECT_TRUE(untouched);
    EXPECT_EQ(fs::last_write_time(stick / "to"), before);

    for (const char* other : {"contentS", "contents of more", "", "conten"}) {
        put(stick / "to", other);
        EXPECT_EQ(copy(), FileResult::Ok);
        EXPECT_FALSE(untouched) << other;
        EXPECT_EQ(get(stick / "to"), "contents");
    }
    const ReadOnly guard(stick / "to");
    EXPECT_EQ(copy(), FileResult::Ok);
    EXPECT_FALSE(untouched) << "a copy may be written";
    EXPECT_EQ(fileAttributes(R"(E:\to)"), FileArchive);
}

TEST_F(Files, AFileIsNotCopiedOntoItself) {
    put(stick / "a", "text");
    EXPECT_EQ(copyFile(R"(E:\a)", R"(E:\A)"), FileResult::PermissionDenied);
    EXPECT_EQ(get(stick / "a"), "text");
}

// Deleting

TEST_F(Files, DeletesFilesAlone) {
    fs::create_directory(stick / "folder");
    put(stick / "a.txt", "x");
    EXPECT_EQ(deleteFile(R"(E:\A.TXT)"), FileResult::Ok);
    EXPECT_FALSE(fs::exists(stick / "a.txt"));
    EXPECT_EQ(deleteFile(R"(E:\a.txt)"), FileResult::FileNotFound);
    EXPECT_EQ(deleteFile(R"(E:\missing\a)"), FileResult::PathNotFound);
    EXPECT_EQ(deleteFile(R"(E:\folder)"), FileResult::PathFileAccess);
    EXPECT_TRUE(fs::is_directory(stick / "folder"));
}

// Only on the drive that is meant

TEST_F(Files, TheDriveThatIsMeantIsWritten) {
    const DriveIdentity drive = driveIdentity("E:\\");
    ASSERT_TRUE(drive);
    put(stick / "from", "copied");
    EXPECT_EQ(writeWholeFile(R"(E:\new)", "first", drive), FileResult::Ok);
    EXPECT_EQ(writeWholeFile(R"(E:\new)", "written", drive), FileResult::Ok);
    EXPECT_EQ(copyFile(R"(E:\from)", R"(E:\copy)", drive), FileResult::Ok);
    EXPECT_EQ(copyFile(R"(E:\from)", R"(E:\COPY)", drive), FileResult::Ok);
    fs::create_directory(stick / "folder");
    EXPECT_EQ(writeWholeFile(R"(E:\folder\deep)", "deep", drive), FileResult::Ok);
    EXPECT_EQ(get(stick / "new"), "written");
    EXPECT_EQ(get(stick / "copy"), "copied");
    EXPECT_EQ(get(stick / "folder" / "deep"), "deep");
    EXPECT_EQ(entries(stick), 4);
}

TEST_F(Files, AnotherOneUnderTheSameLetterIsNotTouched) {
    put(stick / "from", "copied");
    const DriveIdentity drive = driveIdentity("E:\\");
    const fs::path other = drives.exchangeMedium('E');
    put(other / "from", "copied");
    put(other / "there", "mine");
    const auto before = entries(other);
    EXPECT_EQ(writeWholeFile(R"(E:\new)", "x", drive), FileResult::DiskNotReady);
    EXPECT_EQ(writeWholeFile(R"(E:\there)", "x", drive), FileResult::DiskNotReady);
    EXPECT_EQ(copyFile(R"(E:\from)", R"(E:\new)", drive), FileResult::DiskNotReady);
    EXPECT_EQ(copyFile(R"(E:\from)", R"(E:\there)", drive), FileResult::DiskNotReady);
    EXPECT_EQ(get(other / "there"), "mine");
    EXPECT_EQ(entries(other), before);
    EXPECT_EQ(writeWholeFile(R"(E:\new)", "x", driveIdentity("E:\\")), FileResult::Ok);
}

TEST_F(Files, ADriveThatIsMeantIsNoFolderOfTheProgram) {
    const DriveIdentity drive = driveIdentity("E:\\");
    const std::string own = programFolder() + "\\never.tmp";
    EXPECT_EQ(writeWholeFile(own, "x", drive), FileResult::DiskNotReady);
    EXPECT_EQ(fileAttributes(own), std::nullopt);
}

// Comparing with the medium

TEST_F(Files, AFileIsComparedByteByByte) {
    // Around a sector, a page, and the blocks that a backend reads at once.
    for (const std::size_t size : {0UL, 1UL, 511UL, 512UL, 4096UL, 262143UL, 262144UL, 262145UL, 524288UL}) {
        SCOPED_TRACE(size);
        std::string contents(size, 'x');
        ASSERT_EQ(writeWholeFile(R"(E:\a)", contents), FileResult::Ok);
        EXPECT_EQ(compareFile(R"(E:\a)", contents), FileResult::Ok);
        EXPECT_EQ(compareFile(R"(E:\a)", contents, driveIdentity(R"(E:\)")), FileResult::Ok);
        EXPECT_EQ(compareFile(R"(E:\a)", contents + 'x'), FileResult::DeviceIo);
        if (size == 0) continue;
        EXPECT_EQ(compareFile(R"(E:\a)", contents.substr(1)), FileResult::DeviceIo);
        contents.back() = 'y';
        EXPECT_EQ(compareFile(R"(E:\a)", contents), FileResult::DeviceIo);
    }
    EXPECT_EQ(entries(stick), 1);
}

TEST_F(Files, WhatCannotBeReadCannotBeCompared) {
    put(stick / "a", "x");
    fs::create_directory(stick / "folder");
    EXPECT_EQ(compareFile(R"(E:\missing)", ""), FileResult::FileNotFound);
    EXPECT_EQ(compareFile(R"(E:\folder)", ""), FileResult::PathFileAccess);
    EXPECT_EQ(compareFile(R"(X:\a)", "x"), FileResult::DiskNotReady);
    drives.add('F', DriveRemovable);
    EXPECT_EQ(compareFile(R"(E:\a)", "x", driveIdentity(R"(F:\)")), FileResult::DiskNotReady);
}
