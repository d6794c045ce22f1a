#include "platform/profile.h"

#include "platform/program_folder.h"
#include "tests/conformance/environment.h"
#include "tests/conformance/known_difference.h"
#include "tests/conformance/scratch_files.h"

#include <gtest/gtest.h>

#include <chrono>
#include <vector>

using namespace platform;
using namespace conformance;
using namespace std::string_literals;
namespace fs = std::filesystem;

namespace {

constexpr std::string_view path = R"(E:\USB.ini)";
constexpr std::size_t largeBuffer = 32767;
constexpr std::size_t largestFile = 1024UL * 1024;

/// Entries as the functions hand them out, written with "|" for each NUL between or behind them.
std::string shown(std::string entries) {
    for (char& c : entries) {
        if (c == '\0') c = '|';
    }
    return entries;
}

class Profile : public testing::Test {
protected:
    void ini(std::string_view contents) { put(file, contents); }
    std::string ini() { return get(file); }

    static std::string section(std::string_view name, std::string_view where = path) {
        std::vector<char> buffer(largeBuffer, '#');
        const auto count = profileSection(name, buffer, where);
        EXPECT_EQ(buffer[count], '\0');
        return shown({buffer.data(), count});
    }

    static std::string names() {
        std::vector<char> buffer(largeBuffer, '#');
        const auto count = profileSectionNames(buffer, path);
        EXPECT_EQ(buffer[count], '\0');
        return shown({buffer.data(), count});
    }

    /// The file's contents after a key has been written.
    std::string after(std::string_view contents, std::string_view name, std::optional<std::string_view> key,
                      std::optional<std::string_view> value) {
        ini(contents);
        EXPECT_TRUE(writeProfileString(name, key, value, path));
        return ini();
    }

    static bool keepsSpelling() {
        return knownDifference(Differs::Wine, "a key that is written keeps the spelling it has in the file",
                               "Wine 8.0, dlls/kernel32/profile.c");
    }

    Drives drives;
    fs::path stick = drives.add('E', DriveRemovable);
    fs::path file = stick / "USB.ini";
};

} // namespace

// Reading a section

TEST_F(Profile, ASectionIsReadWithTheReasonWhenItCannotBe) {
    ini("[Other]\r\na=1\r\n[Open]\r\nDir=x\r\n; no\r\nmore");
    std::string lines = "old";
    EXPECT_EQ(readProfileSection("open", lines, path), FileResult::Ok);
    EXPECT_EQ(shown(lines), "Dir=x|more|");
    EXPECT_EQ(readProfileSection("none", lines, path), FileResult::Ok);
    EXPECT_EQ(lines, "");
    EXPECT_EQ(readProfileSection("Open", lines, R"(E:\none.ini)"), FileResult::FileNotFound);
    EXPECT_EQ(lines, "");
    fs::remove(file);
    fs::create_directory(file);
    EXPECT_EQ(readProfileSection("Open", lines, path), FileResult::PathFileAccess);
    EXPECT_EQ(lines, "");
    fs::remove(file);
}

TEST_F(Profile, ASectionWithoutLinesIsReadAllTheSame) {
    for (const char* contents :
         {"[Open]", "[open]\r\n\r\n; no\r\n[Other]\r\na=1", "[Other]\r\n[OPEN]\r\n \r\n"}) {
        ini(contents);
        std::string lines = "old";
        EXPECT_EQ(readProfileSection("Open", lines, path), FileResult::Ok) << contents;
        EXPECT_EQ(lines, "") << contents;
    }
}

TEST_F(Profile, ASectionThatIsReadWithTheReasonIsReadWhole) {
    const std::string value(40000, 'v');
    ini("[Open]\r\nDir=" + value);
    std::string lines;
    EXPECT_EQ(readProfileSection("Open", lines, path), FileResult::Ok);
    EXPECT_EQ(lines, "Dir=" + value + '\0');
}

TEST_F(Profile, ASectionIsItsLines) {
    ini("[A]\r\na=1\r\nb = two\r\n[B]\r\nc=3\r\n");
    EXPECT_EQ(section("A"), "a=1|b=two|");
    EXPECT_EQ(section("B"), "c=3|");
}

TEST_F(Profile, WhatIsMissingIsEmpty) {
    EXPECT_EQ(section("A"), "");
    EXPECT_EQ(names(), "");
    EXPECT_EQ(section("A", R"(X:\USB.ini)"), "");
    EXPECT_EQ(section("A", R"(E:\missing\USB.ini)"), "");
    EXPECT_EQ(section("A", R"(E:\)"), "");
    EXPECT_EQ(section("A", R"(E:\NUL)"), "");
    EXPECT_EQ(section("A", ""), "");
    ini("[A]\r\na=1\r\n");
    EXPECT_EQ(section("B"), "");
    ini("");
    EXPECT_EQ(section("A"), "");
    EXPECT_EQ(names(), "");
}

TEST_F(Profile, NamesMatchRegardlessOfCase) {
    ini("[Open]\r\nDir=x\r\n");
    EXPECT_EQ(section("oPEN"), "Dir=x|");
    if (keepsSpelling()) return;
    EXPECT_EQ(after("[Open]\r\nDir=x\r\n", "OPEN", "dIR", "y"), "[Open]\r\ndIR=y\r\n");
}

TEST_F(Profile, AnsiLettersMatchRegardlessOfCase) {
    // a, o and u with dots, s with a hook, oe, y with dots: small in the file, capital in the call.
    ini("[\xE4\xF6\xFC\x9A\x9C\xFF]\r\n\xE9=x\r\n");
    if (!knownDifference(Differs::Wine, "names with letters beyond ASCII match in their own case only",
                         "Wine 8.0, dlls/kernel32/profile.c")) {
        EXPECT_EQ(section("\xC4\xD6\xDC\x8A\x8C\x9F"), "\xE9=x|");
        EXPECT_TRUE(writeProfileString("\xC4\xD6\xDC\x8A\x8C\x9F", "\xC9", "y", path));
        EXPECT_EQ(section("\xE4\xF6\xFC\x9A\x9C\xFF"), "\xC9=y|");
    }
    ini("[\xF7]\r\nx=1\r\n");
    EXPECT_EQ(section("\xD7"), "") << "the signs for division and multiplication are no letters";
}

TEST_F(Profile, BlanksInTheBracketsDoNotCountNorDoesTextBehindThem) {
    ini("  [ s ] ; text\r\nk=1\r\n\t[t]x\r\nk=2\r\n");
    EXPECT_EQ(section("s"), "k=1|");
    if (!knownDifference(Differs::Wine, "blanks around the section that is asked for count",
                         "Wine 8.0, dlls/kernel32/profile.c")) {
        EXPECT_EQ(section(" s "), "k=1|");
    }
    EXPECT_EQ(section("t"), "k=2|");
    EXPECT_EQ(names(), "s|t|");
}

TEST_F(Profile, ABracketAloneBeginsNoSection) {
    ini("[s]\r\n[bad\r\nk=1\r\n");
    EXPECT_EQ(section("s"), "[bad|k=1|");
    EXPECT_EQ(names(), "s|");
}

TEST_F(Profile, WhiteSpaceAroundKeysAndValuesIsTaken) {
    ini("[s]\r\n \t\v\fk\x1A = \t v w \x1A\v\f\r\n");
    EXPECT_EQ(section("s"), "k=v w|");
}

TEST_F(Profile, LinesWithoutKeyOrEqualsSignStayAsTheyAre) {
    ini("[s]\r\nno sign\r\n=v\r\nk=\r\nurl=x=y\r\n");
    EXPECT_EQ(section("s"), "no sign|=v|k=|url=x=y|");
}

TEST_F(Profile, QuotesStay) {
    ini("[s]\r\na=\"x\"\r\nb='y'\r\n\"c\"=\" z \"\r\n");
    EXPECT_EQ(section("s"), "a=\"x\"|b='y'|\"c\"=\" z \"|");
}

TEST_F(Profile, OnlyASemicolonInFrontMakesAComment) {
    ini("[s]\r\n;a=1\r\n  ; b=2\r\n#c=3\r\nd=4;x\r\n;[t]\r\ne=5 ; y\r\n");
    EXPECT_EQ(section("s"), "#c=3|d=4;x|e=5 ; y|");
    EXPECT_EQ(names(), "s|");
}

TEST_F(Profile, EmptyLinesAreLeftOut) {
    ini("\r\n\r\n[s]\r\n\r\na=1\r\n   \r\n\r\nb=2\r\n\r\n");
    EXPECT_EQ(section("s"), "a=1|b=2|");
}

TEST_F(Profile, OfTwoSectionsTheFirstIsRead) {
    ini("[s]\r\na=1\r\n[t]\r\nb=2\r\n[S]\r\nc=3\r\n");
    EXPECT_EQ(section("s"), "a=1|");
    EXPECT_EQ(names(), "s|t|S|");
}

TEST_F(Profile, OfTwoKeysBothAreRead) {
    ini("[s]\r\nk=1\r\nk=2\r\n");
    EXPECT_EQ(section("s"), "k=1|k=2|");
}

TEST_F(Profile, AllLineEnds) {
    ini("[s]\na=1\rb=2\r\nc=3\n\rd=4");
    EXPECT_EQ(section("s"), "a=1|b=2|c=3|d=4|");
    ini("[s]\rk=1\r[t]\rk=2");
    EXPECT_EQ(section("s"), "k=1|");
    EXPECT_EQ(section("t"), "k=2|");
}

TEST_F(Profile, LinesBeforeTheFirstSectionBelongToNone) {
    ini("k=1\r\n[s]\r\na=2\r\n");
    EXPECT_EQ(section("s"), "a=2|");
    EXPECT_EQ(names(), "s|");
}

TEST_F(Profile, BytesComeBackAsTheyAre) {
    ini("[s]\r\nk=\xE4\xF6\xFC\x80\x81\xFE\r\n");
    EXPECT_EQ(section("s"), "k=\xE4\xF6\xFC\x80\x81\xFE|");
}

// Buffers

TEST_F(Profile, ACompleteAnswerLeavesTwoCharactersFree) {
    ini("[section1]\r\n[section2]\r\n[section3]\r\n"); // 27 characters
    const std::string all = "section1|section2|section3|";
    for (const std::size_t size : {100U, 30U, 29U}) {
        std::vector<char> buffer(size, '#');
        EXPECT_EQ(profileSectionNames(buffer, path), 27U) << size;
        EXPECT_EQ(shown({buffer.data(), 27}), all);
        EXPECT_EQ(buffer[27], '\0');
    }
}

TEST_F(Profile, ATruncatedAnswerIsTwoShorterThanTheBuffer) {
    ini("[section1]\r\n[section2]\r\n[section3]\r\n");
    const std::string all = "section1|section2|section3|";
    for (const std::size_t size : {28U, 27U, 20U, 12U, 11U, 10U, 5U, 3U}) {
        std::vector<char> buffer(size, '#');
        EXPECT_EQ(profileSectionNames(buffer, path), size - 2) << size;
        EXPECT_EQ(shown({buffer.data(), size - 2}).substr(0, 8),
                  all.substr(0, std::min<std::size_t>(size - 2, 8)));
        EXPECT_EQ(buffer[size - 2], '\0') << size;
        if (!knownDifference(Differs::Wine, "a truncated list of names ends in one NUL",
                             "https://learn.microsoft.com/windows/win32/api/winbase/"
                             "nf-winbase-getprivateprofilesectionnamesa")) {
            EXPECT_EQ(buffer[size - 1], '\0') << size;
        }
    }
}

TEST_F(Profile, ASectionIsTruncatedInTheSameWay) {
    ini("[s]\r\nabc=def\r\nghi=jkl\r\n"); // 16 characters
    std::vector<char> buffer(18, '#');
    EXPECT_EQ(profileSection("s", buffer, path), 16U) << "complete, and as long as a truncated one";
    EXPECT_EQ(shown({buffer.data(), 18}), "abc=def|ghi=jkl||#");
    buffer.assign(17, '#');
    EXPECT_EQ(profileSection("s", buffer, path), 15U);
    EXPECT_EQ(shown({buffer.data(), 17}), "abc=def|ghi=jkl||");
    buffer.assign(12, '#');
    EXPECT_EQ(profileSection("s", buffer, path), 10U);
    EXPECT_EQ(shown({buffer.data(), 12}), "abc=def|gh||");
}

TEST_F(Profile, TheSectionBufferOfTheProgramCutsALargeSection) {
    ini("[s]\r\nk=" + std::string(40000, 'x') + "\r\n");
    std::vector<char> buffer(largeBuffer, '#');
    EXPECT_EQ(profileSection("s", buffer, path), largeBuffer - 2);
    EXPECT_EQ(buffer[largeBuffer - 3], 'x');
    EXPECT_EQ(buffer[largeBuffer - 2], '\0');
    EXPECT_EQ(buffer[largeBuffer - 1], '\0');
}

TEST_F(Profile, NothingIsWrittenBehindATinyBuffer) {
    ini("[s]\r\nabc=def\r\n");
    std::vector<char> buffer(4, '#');
    EXPECT_EQ(profileSection("s", std::span(buffer).first(0), path), 0U);
    EXPECT_EQ(profileSection("s", std::span(buffer).first(2), path), 0U);
    EXPECT_EQ(buffer[0], '\0');
    EXPECT_EQ(buffer[2], '#');
    EXPECT_EQ(buffer[3], '#');
}

// Writing

TEST_F(Profile, WritingMakesTheFile) {
    EXPECT_TRUE(writeProfileString("Open", "Dir", "x", path));
    EXPECT_EQ(ini(), "[Open]\r\nDir=x\r\n");
    EXPECT_EQ(section("Open"), "Dir=x|");
}

TEST_F(Profile, AnEmptyValueAndABlankAreStoredAsNothing) {
    EXPECT_TRUE(writeProfileString("Open", "Dir", " ", path));
    EXPECT_EQ(ini(), "[Open]\r\nDir=\r\n");
    EXPECT_EQ(section("Open"), "Dir=|");
    EXPECT_TRUE(writeProfileString("Open", "Dir", "x", path));
    EXPECT_TRUE(writeProfileString("Open", "Dir", "", path));
    EXPECT_EQ(ini(), "[Open]\r\nDir=\r\n");
}

TEST_F(Profile, AnExistingKeyIsReplaced) {
    EXPECT_EQ(after("[s]\r\nk = 1\r\n", "s", "k", "2"), "[s]\r\nk=2\r\n");
    if (!keepsSpelling()) {
        EXPECT_EQ(after("[s]\r\n\tK\t=\t1\r\nb=2\r\n", "s", "k", "2"), "[s]\r\nk=2\r\nb=2\r\n");
    }
    EXPECT_EQ(after("[s]\r\nk=1\r\nk=2\r\n", "s", "k", "3"), "[s]\r\nk=3\r\nk=2\r\n") << "the first of two";
    EXPECT_EQ(after("[s]\r\nk=1\r\n[s]\r\nk=2\r\n", "s", "k", "3"), "[s]\r\nk=3\r\n[s]\r\nk=2\r\n");
    EXPECT_EQ(after("[t]\r\nk=1\r\n[s]\r\nk=2\r\n", "s", "k", "3"), "[t]\r\nk=1\r\n[s]\r\nk=3\r\n");
}

TEST_F(Profile, ANewKeyGoesBehindTheLastLineOfItsSection) {
    EXPECT_EQ(after("[s]\r\na=1\r\n", "s", "k", "2"), "[s]\r\na=1\r\nk=2\r\n");
    EXPECT_EQ(after("[s]\r\na=1\r\n[t]\r\nb=1\r\n", "s", "k", "2"), "[s]\r\na=1\r\nk=2\r\n[t]\r\nb=1\r\n");
    EXPECT_EQ(after("[s]\r\na=1\r\n; end\r\n[t]\r\n", "s", "k", "2"),
              "[s]\r\na=1\r\n; end\r\nk=2\r\n[t]\r\n");
    EXPECT_EQ(after("[s]\r\n[t]\r\n", "s", "k", "2"), "[s]\r\nk=2\r\n[t]\r\n");
}

TEST_F(Profile, ACommentIsNoKey) {
    EXPECT_EQ(after("[s]\r\n;k=1\r\n", "s", "k", "2"), "[s]\r\n;k=1\r\nk=2\r\n");
}

TEST_F(Profile, ANewSectionGoesAtTheEnd) {
    EXPECT_EQ(after("[s]\r\na=1\r\n", "t", "k", "2"), "[s]\r\na=1\r\n[t]\r\nk=2\r\n");
    EXPECT_EQ(after("", "t", "k", "2"), "[t]\r\nk=2\r\n");
}

TEST_F(Profile, AMissingLineEndIsAddedFirst) {
    EXPECT_EQ(after("[s]\r\na=1", "t", "k", "2"), "[s]\r\na=1\r\n[t]\r\nk=2\r\n");
    EXPECT_EQ(after("[s]\r\na=1", "s", "k", "2"), "[s]\r\na=1\r\nk=2\r\n");
}

TEST_F(Profile, AKeyIsDeleted) {
    EXPECT_EQ(after("[s]\r\na=1\r\nk = 2\r\nb=3\r\n", "S", "K", std::nullopt), "[s]\r\na=1\r\nb=3\r\n");
    EXPECT_EQ(after("[s]\r\nk=1\r\n", "s", "k", std::nullopt), "[s]\r\n") << "the section line stays";
    EXPECT_EQ(after("[s]\r\na=1\r\n", "s", "k", std::nullopt), "[s]\r\na=1\r\n");
    EXPECT_EQ(after("[s]\r\na=1\r\n", "t", "a", std::nullopt), "[s]\r\na=1\r\n");
}

TEST_F(Profile, ASectionIsDeleted) {
    EXPECT_EQ(after("[r]\r\nx=1\r\n[s]\r\n; c\r\na=1\r\n[t]\r\ny=1\r\n", "S", std::nullopt, std::nullopt),
              "[r]\r\nx=1\r\n[t]\r\ny=1\r\n");
    EXPECT_EQ(after("[s]\r\na=1\r\n", "s", std::nullopt, "value"), "");
    EXPECT_EQ(after("[s]\r\na=1\r\n", "t", std::nullopt, std::nullopt), "[s]\r\na=1\r\n");
}

TEST_F(Profile, KeepsTheSpellingOfWhatIsWritten) {
    EXPECT_TRUE(writeProfileString("USB Tool", "chkAuto", "Wahr # \"x\" ; y = z", path));
    EXPECT_EQ(ini(), "[USB Tool]\r\nchkAuto=Wahr # \"x\" ; y = z\r\n");
    EXPECT_EQ(section("usb tool"), "chkAuto=Wahr # \"x\" ; y = z|");
}

TEST_F(Profile, WritesBytesAsTheyAre) {
    EXPECT_TRUE(writeProfileString("Open", "Dir",
                                   "B\xFC"
                                   "cher\\\x80",
                                   path));
    EXPECT_EQ(ini(), "[Open]\r\nDir=B\xFC"
                     "cher\\\x80\r\n");
}

TEST_F(Profile, TextsThatWouldMakeLinesAreRefused) {
    ini("[s]\r\nk=1\r\n");
    for (const std::string& bad : {"a\rb"s, "a\nb"s, "a\0b"s, "\r\n"s, "x\n[t]"s, "\0"s}) {
        EXPECT_FALSE(writeProfileString(bad, "k", "2", path));
        EXPECT_FALSE(writeProfileString("s", bad, "2", path));
        EXPECT_FALSE(writeProfileString("s", "k", bad, path));
        EXPECT_FALSE(writeProfileString(bad, std::nullopt, std::nullopt, path));
        EXPECT_FALSE(writeProfileString("s", bad, std::nullopt, path));
    }
    EXPECT_EQ(ini(), "[s]\r\nk=1\r\n");
}

TEST_F(Profile, TheFilesNameMatchesRegardlessOfCase) {
    put(stick / "usb.INI", "[Open]\r\nDir=x\r\n");
    EXPECT_EQ(section("Open"), "Dir=x|");
    EXPECT_TRUE(writeProfileString("Open", "Dir", "y", path));
    EXPECT_EQ(get(stick / "usb.INI"), "[Open]\r\nDir=y\r\n");
    EXPECT_EQ(entries(stick), 1);
}

TEST_F(Profile, WritingFailsWithoutAFolderOrADrive) {
    EXPECT_FALSE(writeProfileString("s", "k", "v", R"(E:\missing\USB.ini)"));
    EXPECT_FALSE(writeProfileString("s", "k", "v", R"(X:\USB.ini)"));
    EXPECT_FALSE(writeProfileString("s", "k", "v", R"(E:\)"));
    EXPECT_FALSE(writeProfileString("s", "k", "v", R"(E:\a:b.ini)"));
    fs::create_directory(stick / "folder");
    EXPECT_FALSE(writeProfileString("s", "k", "v", R"(E:\folder)"));
    EXPECT_EQ(entries(stick), 1);
}

TEST_F(Profile, AReadOnlyFileStaysAsItIs) {
    ini("[s]\r\nk=1\r\n");
    const ReadOnly guard(file);
    EXPECT_FALSE(writeProfileString("s", "k", "2", path));
    EXPECT_EQ(ini(), "[s]\r\nk=1\r\n");
    EXPECT_EQ(section("s"), "k=1|");
    EXPECT_EQ(entries(stick), 1);
}

TEST_F(Profile, AFullDiskLeavesTheOldContents) {
    constexpr std::size_t room = 64UL * 1024;
    const auto small = drives.addSmall('F', room);
    if (!small) GTEST_SKIP() << "this machine lets nobody make a small drive";
    const std::string old = "[s]\r\nk=1\r\n";
    put(*small / "USB.ini", old);
    std::ofstream(*small / "filler", std::ios::binary) << std::string(room, 'x'); // as much as goes in

    EXPECT_FALSE(writeProfileString("s", "k", std::string(1000, 'y'), R"(F:\USB.ini)"));
    EXPECT_EQ(get(*small / "USB.ini"), old);
    EXPECT_EQ(entries(*small), 2) << "nothing is left behind";
    EXPECT_FALSE(writeProfileString("s", "k", "v", R"(F:\new.ini)"));
    EXPECT_EQ(entries(*small), 2);
}

TEST_F(Profile, WorksInTheProgramFolder) {
    const fs::path own = fs::path(programFolder()) / "profile.tmp";
    const std::string ownPath = programFolder() + "\\profile.tmp";
    EXPECT_TRUE(writeProfileString("s", "k", "v", ownPath));
    EXPECT_EQ(get(own), "[s]\r\nk=v\r\n");
    EXPECT_EQ(section("s", ownPath), "k=v|");
    fs::remove(own);
}

TEST_F(Profile, AnotherDriveUnderTheSameLetterIsNotWritten) {
    ini("[s]\r\nk=old\r\n");
    const DriveIdentity drive = driveIdentity("E:\\");
    ASSERT_TRUE(drive);
    EXPECT_TRUE(writeProfileString("s", "k", "new", path, drive));
    EXPECT_EQ(ini(), "[s]\r\nk=new\r\n");
    const fs::path other = drives.exchangeMedium('E');
    const auto before = entries(other);
    EXPECT_FALSE(writeProfileString("s", "k", "newer", path, drive));
    EXPECT_EQ(entries(other), before);
    put(other / file.filename(), "[s]\r\nk=its own\r\n");
    EXPECT_FALSE(writeProfileString("s", "k", "newer", path, drive));
    EXPECT_EQ(ini(), "[s]\r\nk=its own\r\n");
}

TEST_F(Profile, OneByteMoreThanTheLargestCannotBeRead) {
    const std::string lines = "[s]\r\nk=1\r\n;";
    ini(lines + std::string(largestFile - lines.size(), 'x'));
    EXPECT_TRUE(profileIsReadable(path));
    EXPECT_EQ(section("s"), "k=1|");
    EXPECT_EQ(names(), "s|");

    const std::string large = lines + std::string(largestFile + 1 - lines.size(), 'x');
    ini(large);
    EXPECT_FALSE(profileIsReadable(path));
    EXPECT_EQ(section("s"), "");
    EXPECT_EQ(names(), "");
    std::string read = "old";
    EXPECT_EQ(readProfileSection("s", read, path), FileResult::PathFileAccess);
    EXPECT_EQ(read, "");
    EXPECT_FALSE(writeProfileString("s", "k", "2", path));
    EXPECT_FALSE(writeProfileString("s", "k", std::nullopt, path));
    EXPECT_FALSE(writeProfileString("s", std::nullopt, std::nullopt, path));
    EXPECT_EQ(ini(), large) << "what cannot be read is not written either";
    EXPECT_EQ(entries(stick), 1);
}

TEST_F(Profile, WritingMakesNoFileThatCannotBeRead) {
    const std::string lines = "[s]\r\nk=1\r\n;";
    const std::string full = lines + std::string(largestFile - lines.size(), 'x');
    ini(full);
    EXPECT_FALSE(writeProfileString("s", "new", "1", path));
    EXPECT_EQ(ini(), full);
    EXPECT_TRUE(writeProfileString("s", "k", std::nullopt, path)) << "it may become smaller";
}

TEST_F(Profile, WhatIsNoFileCannotBeRead) {
    EXPECT_FALSE(profileIsReadable(path));
    EXPECT_FALSE(profileIsReadable(R"(E:\)"));
    EXPECT_FALSE(profileIsReadable(R"(X:\USB.ini)"));
    EXPECT_FALSE(profileIsReadable(""));
    ini("");
    EXPECT_TRUE(profileIsReadable(path));
}

TEST_F(Profile, ManyLinesTakeTimeInProportion) {
    // As many lines as fit, a key in each: a moment for what reads the file once, minutes for what starts
    // over at each line.
    std::string large = "[s]\r\n";
    for (int i = 0; large.size() < largestFile - 100; ++i)
        large += "k" + std::to_string(i) + "=\r\n";
    large += "[last]\r\nk=1\r\n";
    ini(large);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(section("last"), "k=1|");
    EXPECT_EQ(names(), "s|last|");
    EXPECT_TRUE(writeProfileString("s", "new", "1", path));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
    EXPECT_EQ(fs::file_size(file), large.size() + std::string_view("new=1\r\n").size());
}
