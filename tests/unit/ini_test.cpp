// INI files through the program's own layer.

#include "main_window.h"

#include "base/keyed_list.h"
#include "platform/basINI.h"

#include <algorithm>

using namespace basINI;
using Names = std::vector<std::string>;

namespace {

constexpr const char* file = "D:\\USB.ini";

/// Fills a buffer as the profile functions do, with that text and a result of its own.
std::uint32_t give(std::span<char> buffer, std::string_view text, std::size_t result) {
    std::fill(buffer.begin(), buffer.end(), '\0');
    std::copy(text.begin(), text.end(), buffer.begin());
    return static_cast<std::uint32_t>(result);
}

} // namespace

class Ini : public testing::Test {
protected:
    Ini() {
        fake::reset();
        IniReset();
    }
    ~Ini() override { fake::reset(); }

    static void put(const std::string& contents) { fake::computer().files[file].contents = contents; }
    static std::string contents() { return fake::computer().files[file].contents; }

    /// Every read of a section gives exactly these bytes.
    static void givesSection(const std::string& bytes) {
        fake::computer().profile = [bytes](std::span<char> buffer, const std::string&) {
            return give(buffer, bytes, bytes.size());
        };
    }
};

TEST_F(Ini, ReadsKeysAndValuesInOrderAndTrimsThem) {
    put("[S]\r\na=1\r\n b = two \r\n");
    IniReadSection(file, "S");
    EXPECT_EQ(IniCount(), 2);
    EXPECT_EQ(IniGetKey("0"), "a");
    EXPECT_EQ(IniGetValue("0"), "1");
    EXPECT_EQ(IniGetKey("1"), "b");
    EXPECT_EQ(IniGetValue("1"), "two");
}

TEST_F(Ini, AValueEndsAtItsFirstEqualsSign) {
    put("[S]\r\nurl=x=y\r\ne==z\r\n=v\r\n");
    IniReadSection(file, "S");
    EXPECT_EQ(IniGetKey("0"), "url");
    EXPECT_EQ(IniGetValue("0"), "x");
    EXPECT_EQ(IniGetKey("1"), "e");
    EXPECT_EQ(IniGetValue("1"), "");
    EXPECT_EQ(IniGetKey("2"), "");
    EXPECT_EQ(IniGetValue("2"), "v");
}

TEST_F(Ini, ALineWithoutAnEqualsSignIsAnErrorAndWhatCameBeforeStays) {
    put("[S]\r\na=1\r\nbroken\r\nc=3\r\n");
    EXPECT_EQ(unit::errorOf([] { IniReadSection(file, "S"); }), 9);
    EXPECT_EQ(IniCount(), 1);
}

TEST_F(Ini, AMissingFileOrSectionLeavesTheListsEmpty) {
    IniReadSection("D:\\none.ini", "S");
    put("[S]\r\na=1\r\n");
    IniReadSection(file, "T");
    EXPECT_EQ(IniCount(), 0);
    EXPECT_EQ(IniGetKey("0"), "");
    EXPECT_EQ(IniGetValue("0"), "");
}

TEST_F(Ini, FurtherReadsAppendUntilAReset) {
    put("[A]\r\na=1\r\nb=2\r\n[B]\r\nc=3\r\n");
    IniReadSection(file, "A");
    IniReadSection(file, "B");
    EXPECT_EQ(IniCount(), 3);
    EXPECT_EQ(IniGetKey("2"), "c");
    EXPECT_EQ(IniGetValue("2"), "3");
    IniReset();
    EXPECT_EQ(IniCount(), 0);
    EXPECT_EQ(IniGetValue("0"), "");
}

TEST_F(Ini, PositionsAreDecimalTexts) {
    put("[S]\r\na=1\r\n");
    IniReadSection(file, "S");
    for (const char* position : {"", "1", "-1", "00", " 0", "0 ", "x", "99999999999999999999"}) {
        EXPECT_EQ(IniGetKey(position), "") << position;
        EXPECT_EQ(IniGetValue(position), "") << position;
    }
}

TEST_F(Ini, AsksWithABufferOf32767Blanks) {
    std::size_t size = 0;
    bool blank = false;
    fake::computer().profile = [&](std::span<char> buffer, const std::string&) {
        size = buffer.size();
        blank = std::all_of(buffer.begin(), buffer.end(), [](char c) { return c == ' '; });
        return 0U;
    };
    IniReadSection(file, "S");
    EXPECT_EQ(size, 32767U);
    EXPECT_TRUE(blank);
    EXPECT_EQ(IniCount(), 0);
}

TEST_F(Ini, TheLastLineOfACutSectionIsLeftOut) {
    const std::string line = "key=" + std::string(95, 'v') + '\0'; // 100 characters
    fake::computer().profile = [&](std::span<char> buffer, const std::string&) {
        std::string text;
        while (text.size() < buffer.size())
            text += line;
        text.resize(buffer.size() - 2);
        return give(buffer, text, text.size());
    };
    IniReadSection(file, "S");
    EXPECT_EQ(IniCount(), 327) << "32765 characters are 327 lines and a part of one";
    EXPECT_EQ(IniGetValue("326"), std::string(95, 'v'));
}

TEST_F(Ini, OneCharacterIsNoLine) {
    givesSection(std::string("\0", 1));
    IniReadSection(file, "S");
    EXPECT_EQ(IniCount(), 0);
}

TEST_F(Ini, ALineThatEndsTheResultIsReadToItsNul) {
    givesSection(std::string("=\0=\0", 4));
    IniReadSection(file, "S");
    EXPECT_EQ(IniCount(), 2);
}

TEST_F(Ini, TextIsStoredInTheAnsiCodePage) {
    EXPECT_TRUE(IniWrite(file, "Öffnen", "Straße", "€ 5"));
    EXPECT_EQ(contents(), "[\xD6"
                          "ffnen]\r\nStra\xDF"
                          "e=\x80 5\r\n");
    IniReadSection(file, "Öffnen");
    EXPECT_EQ(IniGetKey("0"), "Straße");
    EXPECT_EQ(IniGetValue("0"), "€ 5");
    EXPECT_EQ(IniGetSectionNames(file), (Names{"Öffnen", ""}));
}

TEST_F(Ini, WritesOneKeyAndKeepsTheOthers) {
    EXPECT_TRUE(IniWrite(file, "Open", "Dir", "a"));
    EXPECT_TRUE(IniWrite(file, "Open", "Dir", "b"));
    EXPECT_TRUE(IniWrite(file, "Open", "More", "c"));
    EXPECT_EQ(contents(), "[Open]\r\nDir=b\r\nMore=c\r\n");
}

TEST_F(Ini, AnEmptyValueIsStoredAsOneBlank) {
    EXPECT_TRUE(IniWrite(file, "Open", "Dir", ""));
    EXPECT_EQ(contents(), "[Open]\r\nDir= \r\n");
    IniReadSection(file, "Open");
    EXPECT_EQ(IniGetKey("0"), "Dir");
    EXPECT_EQ(IniGetValue("0"), "");
}

TEST_F(Ini, WritingReportsFailureByItsResult) {
    fake::computer().writeResults[file] = platform::FileResult::DiskFull;
    EXPECT_FALSE(IniWrite(file, "Open", "Dir", "a"));
}

TEST_F(Ini, SectionNamesEndInOneEmptyText) {
    put("[A]\r\nx=1\r\n[B]\r\n");
    EXPECT_EQ(IniGetSectionNames(file), (Names{"A", "B", ""}));
}

TEST_F(Ini, NoSectionIsOneEmptyText) {
    EXPECT_EQ(IniGetSectionNames("D:\\none.ini"), Names{""});
    put("x=1\r\n");
    EXPECT_EQ(IniGetSectionNames(file), Names{""});
}

TEST_F(Ini, TheBufferOfNamesGrowsByStepsOf256WhileItIsTooSmall) {
    const std::string names = std::string(300, 'a') + '\0' + std::string(300, 'b') + '\0';
    std::vector<std::size_t> sizes;
    bool empty = true;
    fake::computer().profile = [&](std::span<char> buffer, const std::string&) {
        sizes.push_back(buffer.size());
        empty = empty && std::all_of(buffer.begin(), buffer.end(), [](char c) { return c == '\0'; });
        const std::size_t length = names.size() < buffer.size() ? names.size() : buffer.size() - 2;
        return give(buffer, std::string_view(names).substr(0, length), length);
    };
    EXPECT_EQ(IniGetSectionNames(file), (Names{std::string(300, 'a'), std::string(300, 'b'), ""}));
    EXPECT_EQ(sizes, (std::vector<std::size_t>{256, 512, 768}));
    EXPECT_TRUE(empty);
}

TEST_F(Ini, FromTheHundredAndTwentyEighthStepTheBufferOfNamesDoubles) {
    std::vector<std::size_t> sizes;
    fake::computer().profile = [&](std::span<char> buffer, const std::string&) {
        sizes.push_back(buffer.size());
        return give(buffer, "", sizes.size() < 130 ? buffer.size() - 2 : 0);
    };
    EXPECT_EQ(IniGetSectionNames(file), Names{""});
    ASSERT_EQ(sizes.size(), 130U);
    EXPECT_EQ(sizes[127], 32768U);
    EXPECT_EQ(sizes[128], 65536U);
    EXPECT_EQ(sizes[129], 131072U);
}

TEST_F(Ini, ACompleteAnswerTwoShortOfTheBufferCostsOneMoreTurn) {
    const std::string names = std::string(253, 'a') + '\0'; // 254 characters
    int calls = 0;
    fake::computer().profile = [&](std::span<char> buffer, const std::string&) {
        ++calls;
        return give(buffer, names, names.size());
    };
    EXPECT_EQ(IniGetSectionNames(file), (Names{std::string(253, 'a'), ""}));
    EXPECT_EQ(calls, 2);
}

TEST(KeyedList, KeysArePositions) {
    base::KeyedList list;
    EXPECT_EQ(list.count(), 0U);
    list.add("a");
    list.add("b");
    EXPECT_EQ(list.get("0"), "a");
    EXPECT_EQ(list.get("1"), "b");
    EXPECT_EQ(list.get("2"), "");
    EXPECT_EQ(list.get("01"), "");
    EXPECT_EQ(list.get("-1"), "");
    EXPECT_EQ(list.count(), 2U);
}
