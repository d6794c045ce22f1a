// ASCII letters, blanks at the ends of a text, and numbers as bytes.

#include "base/letters.h"
#include "base/little_endian.h"
#include "base/trim.h"
#include "base/whole_number.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>

TEST(Letters, ChangeTheirCaseAndNothingElseDoes) {
    EXPECT_EQ(base::lower("AZaz09@[`{"), "azaz09@[`{");
    EXPECT_EQ(base::upper("AZaz09@[`{"), "AZAZ09@[`{");
    EXPECT_EQ(base::lower("ÄÖÜ"), "ÄÖÜ") << "bytes beyond ASCII";
    EXPECT_EQ(base::upper("äöü"), "äöü");
}

TEST(Letters, AreToldFromTheirNeighbours) {
    for (const char c : {'A', 'Z', 'a', 'z'})
        EXPECT_TRUE(base::isLetter(c)) << c;
    for (const char c : {'@', '[', '`', '{', '0', '\xC4', '\0'})
        EXPECT_FALSE(base::isLetter(c)) << c;
}

TEST(Letters, AreComparedRegardlessOfCase) {
    EXPECT_TRUE(base::sameNoCase("Update", "uPDATE"));
    EXPECT_FALSE(base::sameNoCase("Update", "Updat"));
    EXPECT_FALSE(base::sameNoCase("[", "{"));
    EXPECT_TRUE(base::startsWithNoCase("HTTP://x", "http:"));
    EXPECT_TRUE(base::startsWithNoCase("x", ""));
    EXPECT_FALSE(base::startsWithNoCase("htt", "http"));
}

TEST(Trim, TakesTheBlanksAtBothEnds) {
    EXPECT_EQ(base::trim("  a b "), "a b");
    EXPECT_EQ(base::trim("\ta "), "\ta");
    EXPECT_EQ(base::trim("\t a\t", " \t"), "a");
    EXPECT_EQ(base::trim("   "), "");
    EXPECT_EQ(base::trim(""), "");
}

TEST(LittleEndian, TheLowestByteIsTheFirst) {
    std::array<std::uint8_t, 6> bytes{};
    base::putLittleEndian(bytes, 1, 4, 0x80FF0201U);
    EXPECT_EQ(bytes, (std::array<std::uint8_t, 6>{0, 1, 2, 0xFF, 0x80, 0}));
    EXPECT_EQ(base::littleEndian(bytes, 1, 4), 0x80FF0201U);
    EXPECT_EQ(base::littleEndian(std::string("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"), 0, 8), UINT64_MAX);
}

TEST(LittleEndian, WhatIsNotThereCountsAsNothing) {
    EXPECT_EQ(base::littleEndian(std::string("\1\2"), 1, 4), 2U);
    EXPECT_EQ(base::littleEndian(std::string("\1\2"), 5, 4), 0U);
}

TEST(WholeNumbers, AreTheWholeText) {
    EXPECT_EQ(base::wholeNumber<std::uint32_t>("4294967295"), 4294967295U);
    EXPECT_EQ(base::wholeNumber<int>("-7"), -7);
    EXPECT_EQ(base::wholeNumber<unsigned char>("fF", 16), 255);
    for (const char* const text : {"", " 1", "1 ", "+1", "1x", "x", "0x1", "-", "4294967296", "-1", "1.0"})
        EXPECT_EQ(base::wholeNumber<std::uint32_t>(text), std::nullopt) << text;
}
