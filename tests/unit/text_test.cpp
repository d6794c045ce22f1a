// Windows-1252 and UTF-8.

#include "base/text.h"

#include <gtest/gtest.h>

using namespace base;

TEST(AnsiText, EveryByteComesBack) {
    std::string bytes;
    for (int i = 0; i < 256; ++i)
        bytes += static_cast<char>(i);
    const std::string text = fromAnsi(bytes);
    EXPECT_EQ(toAnsi(text), bytes);
    EXPECT_EQ(characterCount(text), 256U);
}

TEST(AnsiText, UpperBytesAreTheirCharacters) {
    EXPECT_EQ(fromAnsi("\xC4\xD6\xDC\xE4\xF6\xFC\xDF"), "ÄÖÜäöüß");
    EXPECT_EQ(fromAnsi("\xA0\xFF"), "\u00A0ÿ");
    EXPECT_EQ(fromAnsi("\x80\x82\x83\x84\x85\x86\x87\x88\x89\x8A\x8B\x8C\x8E"), "€‚ƒ„…†‡ˆ‰Š‹ŒŽ");
    EXPECT_EQ(fromAnsi("\x91\x92\x93\x94\x95\x96\x97\x98\x99\x9A\x9B\x9C\x9E\x9F"), "‘’“”•–—˜™š›œžŸ");
}

TEST(AnsiText, BytesWithoutACharacterBecomeTheControlOfTheirNumber) {
    EXPECT_EQ(fromAnsi("\x81\x8D\x8F\x90\x9D"), "\xC2\x81\xC2\x8D\xC2\x8F\xC2\x90\xC2\x9D");
}

TEST(AnsiText, CharactersWithoutAByteBecomeQuestionMarks) {
    EXPECT_EQ(toAnsi("a→ж😀b"), "a???b");
    EXPECT_EQ(toAnsi("\xC2\x80"), "?") << "U+0080 is none of its bytes";
}

TEST(AnsiText, BrokenTextBecomesQuestionMarksByteByByte) {
    EXPECT_EQ(toAnsi("a\xFFz"), "a?z");
    EXPECT_EQ(toAnsi("\xC3"), "?");
    EXPECT_EQ(toAnsi("\xE2\x82z"), "??z");
    EXPECT_EQ(toAnsi("\xF0\x9F\x98"), "???");
    EXPECT_EQ(toAnsi("\xC0\x80"), "??");
    EXPECT_EQ(toAnsi("\xE0\x80\x80"), "???") << "a NUL in a longer form than it has";
}

TEST(AnsiText, NulsAreCharactersLikeOthers) {
    EXPECT_EQ(toAnsi(std::string("a\0b", 3)), std::string("a\0b", 3));
    EXPECT_EQ(fromAnsi(std::string("a\0b", 3)), std::string("a\0b", 3));
    EXPECT_EQ(fromAnsi(""), "");
}

TEST(Characters, AreCountedNotBytes) {
    EXPECT_EQ(characterCount(""), 0U);
    EXPECT_EQ(characterCount("abc"), 3U);
    EXPECT_EQ(characterCount("äöü"), 3U);
    EXPECT_EQ(characterCount("€😀"), 2U);
    EXPECT_EQ(characterCount("\xFF\xC3"), 2U) << "a byte that belongs to none is one";
}

TEST(Characters, TheFirstOnesAreWhole) {
    EXPECT_EQ(firstCharacters("äöü", 2), "äö");
    EXPECT_EQ(firstCharacters("€a", 1), "€");
    EXPECT_EQ(firstCharacters("ab", 5), "ab");
    EXPECT_EQ(firstCharacters("ab", 0), "");
}
