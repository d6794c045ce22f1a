// What the profile functions make of files that no Windows program would write, and what they leave
// untouched: more than the documentation promises.
#include "platform/profile.h"

#include "platform/linux/base/profile_text.h"
#include "tests/conformance/environment.h"
#include "tests/conformance/scratch_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

using namespace platform;
using namespace platform::linux;
using namespace conformance;
using namespace std::string_literals;
namespace fs = std::filesystem;

namespace {

std::string set(std::string_view text, std::string_view value = "2") {
    return withProfileKey(text, "s", "k", value);
}

std::string erase(std::string_view text) {
    return withProfileKey(text, "s", "k", std::nullopt);
}

std::size_t occurrences(std::string_view text, char c) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), c));
}

/// Everything that means something in a profile, in any order.
std::string randomText(std::mt19937& random) {
    static constexpr std::string_view alphabet("[]=;s kS\r\n\t\0\x1A\xEF\xBB\xBFt\xE4", 18);
    std::string text(random() % 40, '\0');
    for (char& c : text)
        c = alphabet[random() % alphabet.size()];
    return text;
}

} // namespace

TEST(ProfileText, UntouchedLinesStayByteForByte) {
    EXPECT_EQ(set("; a\n\n[r]\n x  =  y \r[s]\n\n\tq = 1 \n\n"),
              "; a\n\n[r]\n x  =  y \r[s]\n\n\tq = 1 \nk=2\r\n\n");
    EXPECT_EQ(set("[s]\r\na=1\r\n\r\n\r\n[t]\r\n"), "[s]\r\na=1\r\nk=2\r\n\r\n\r\n[t]\r\n");
    EXPECT_EQ(set("\n\n"), "\n\n[s]\r\nk=2\r\n");
}

TEST(ProfileText, AReplacedLineKeepsItsLineEnd) {
    EXPECT_EQ(set("[s]\nk=1\nz=1\n"), "[s]\nk=2\nz=1\n");
    EXPECT_EQ(set("[s]\rk=1\rz=1\r"), "[s]\rk=2\rz=1\r");
    EXPECT_EQ(set("[s]\r\nk=1"), "[s]\r\nk=2");
}

TEST(ProfileText, ALineWithoutEqualsSignIsAKeyToo) {
    EXPECT_EQ(set("[s]\r\nk\r\n"), "[s]\r\nk=2\r\n");
    EXPECT_EQ(erase("[s]\r\nk\r\n"), "[s]\r\n");
}

TEST(ProfileText, ALineEndsAtItsFirstNul) {
    const std::string text = "[s]\0[t]\r\nk=1\0\0=9\r\n\0\0\0"s;
    EXPECT_EQ(profileNames(text), "s\0"s);
    EXPECT_EQ(profileLines(text, "s"), "k=1\0"s);
    EXPECT_EQ(set("[s]\r\na=1\r\n\0\0\0"s), "[s]\r\na=1\r\nk=2\r\n\0\0\0"s);
    EXPECT_EQ(profileLines(std::string(100000, '\0'), "s"), "");
}

TEST(ProfileText, AByteOrderMarkHidesTheFirstSection) {
    const std::string text = "\xEF\xBB\xBF[s]\r\nk=1\r\n[t]\r\nx=1\r\n";
    EXPECT_EQ(profileNames(text), "t\0"s);
    EXPECT_EQ(profileLines(text, "s"), "");
    EXPECT_EQ(set(text), text + "[s]\r\nk=2\r\n");
}

TEST(ProfileText, TheSectionEndsAtTheLastBracket) {
    EXPECT_EQ(profileNames("[a]b]c\r\n[]\r\n[ ]\r\n"), "a]b\0"s);
    EXPECT_EQ(profileLines("[]\r\nk=1\r\n", ""), "k=1\0"s);
}

TEST(ProfileText, AnEndOfFileCharacterStaysAtTheEndOfItsLine) {
    EXPECT_EQ(set("[s]\r\na=1\r\n\x1A"), "[s]\r\na=1\r\nk=2\r\n\x1A");
}

TEST(ProfileText, AnyTextCanBeReadAndEdited) {
    std::mt19937 random(1); // the same texts every time
    for (int i = 0; i < 50000; ++i) {
        const std::string text = randomText(random);
        const std::string lines = profileLines(text, "s");
        EXPECT_TRUE(lines.empty() || lines.back() == '\0');
        EXPECT_EQ(lines.find("\0\0"s), std::string::npos);
        EXPECT_TRUE(lines.empty() || lines[0] != '\0') << "an empty entry would end the list";

        const std::string written = set(text, "v");
        EXPECT_EQ(set(written, "v"), written) << "writing the same twice changes nothing";
        EXPECT_NE(profileLines(written, "s").find("k=v\0"s), std::string::npos);
        EXPECT_LE(written.size(), text.size() + std::string_view("\r\n[s]\r\nk=v\r\n").size());

        EXPECT_EQ(profileLines(withoutProfileSection(written, "s"), "t").empty(),
                  profileLines(written, "t").empty());
        EXPECT_EQ(occurrences(profileNames(withoutProfileSection(written, "s")), '\0') + 1,
                  occurrences(profileNames(written), '\0'));
        if (testing::Test::HasFailure()) {
            FAIL() << testing::PrintToString(text);
        }
    }
}

namespace {

class ProfileFile : public testing::Test {
protected:
    Drives drives;
    fs::path stick = drives.add('E', DriveRemovable);
    fs::path file = stick / "USB.ini";
    static constexpr std::string_view path = R"(E:\USB.ini)";
};

} // namespace

TEST_F(ProfileFile, AKeyWithoutANameIsRefused) {
    EXPECT_FALSE(writeProfileString("s", "", "2", path));
    EXPECT_FALSE(writeProfileString("s", "  ", "2", path));
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(ProfileFile, DeletingFromAMissingFileMakesNone) {
    EXPECT_TRUE(writeProfileString("s", "k", std::nullopt, path));
    EXPECT_TRUE(writeProfileString("s", std::nullopt, std::nullopt, path));
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(ProfileFile, BinaryFilesDoNoHarm) {
    const std::string binary = pattern(1000000);
    put(file, binary);
    std::vector<char> buffer(32767);
    EXPECT_EQ(profileSection("s", buffer, path), 0U);
    EXPECT_TRUE(writeProfileString("s", "k", "2", path));
    const std::string changed = get(file);
    EXPECT_EQ(changed.substr(0, binary.size()), binary);
    EXPECT_EQ(changed.substr(binary.size()), "\r\n[s]\r\nk=2\r\n");
}
