#include "base/text.h"

#include <gtest/gtest.h>

using namespace base;

TEST(Text, AsciiStaysAsItIs) {
    std::string ascii;
    for (int c = 0; c < 128; ++c)
        ascii += static_cast<char>(c);
    EXPECT_EQ(fromAnsi(ascii), ascii);
    EXPECT_EQ(toAnsi(ascii), ascii);
    EXPECT_EQ(fromAnsi(""), "");
    EXPECT_EQ(toAnsi(""), "");
}

TEST(Text, AnsiLettersAreDecoded) {
    EXPECT_EQ(fromAnsi("\xC4\xD6\xDC\xE4\xF6\xFC\xDF"), "ÄÖÜäöüß");
    EXPECT_EQ(fromAnsi("\x80\x8A\x8C\x8E\x9A\x9C\x9E\x9F\x96\x84\x93"), "€ŠŒŽšœžŸ–„“");
    EXPECT_EQ(fromAnsi("\xA0\xFF"), "\xC2\xA0ÿ");
    EXPECT_EQ(fromAnsi("\x81"), "\xC2\x81") << "no character of its own";
}

TEST(Text, EveryByteComesBack) {
    std::string all;
    for (int c = 0; c < 256; ++c)
        all += static_cast<char>(c);
    EXPECT_EQ(toAnsi(fromAnsi(all)), all);
}

TEST(Text, WhatHasNoByteBecomesAQuestionMark) {
    EXPECT_EQ(toAnsi("a日b"), "a?b");
    EXPECT_EQ(toAnsi("Ω😀"), "??");
    EXPECT_EQ(toAnsi("\xC3"), "?") << "half a character";
    EXPECT_EQ(toAnsi("\xFF\xFE"), "??");
}

TEST(Text, CountsCharacters) {
    EXPECT_EQ(characterCount(""), 0U);
    EXPECT_EQ(characterCount("abc"), 3U);
    EXPECT_EQ(characterCount("Größe €"), 7U);
    EXPECT_EQ(characterCount("日本😀"), 3U);
    EXPECT_EQ(characterCount("a\xC3"), 2U) << "a byte that belongs to no character counts as one";
    EXPECT_EQ(characterCount("\x80\x80"), 2U);
    EXPECT_EQ(characterCount(std::string_view("a\0b", 3)), 3U);
}

TEST(Text, CutsBetweenCharacters) {
    EXPECT_EQ(firstCharacters("Größe", 3), "Grö");
    EXPECT_EQ(firstCharacters("Größe", 5), "Größe");
    EXPECT_EQ(firstCharacters("Größe", 50), "Größe");
    EXPECT_EQ(firstCharacters("Größe", 0), "");
    EXPECT_EQ(firstCharacters("😀日", 1), "😀");
    EXPECT_EQ(firstCharacters("", 1), "");
}
