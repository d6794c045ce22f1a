// Colours that can be told from their ground.

#include "toolkit/contrast.h"

#include <gtest/gtest.h>

using namespace toolkit;

constexpr Color grey{119, 119, 119};
constexpr Color face{240, 240, 240};

TEST(Contrast, IsThatOfWcag) {
    EXPECT_DOUBLE_EQ(contrast(black, white), 21);
    EXPECT_DOUBLE_EQ(contrast(white, black), 21);
    EXPECT_DOUBLE_EQ(contrast(grey, grey), 1);
    EXPECT_NEAR(contrast(grey, white), 4.48, 0.01);
    EXPECT_NEAR(contrast({255, 0, 0}, white), 4.00, 0.01);
}

TEST(Contrast, WhatCanBeReadStaysAsItIs) {
    EXPECT_EQ(readable(grey, black, {white}, 4), grey);
}

TEST(Contrast, WhatCannotIsMovedJustSoFar) {
    const Color moved = readable(grey, black, {white, face}, textContrast);
    EXPECT_GE(contrast(moved, face), textContrast);
    EXPECT_LT(contrast(moved, face), textContrast + 1);
    const Color onBlack = readable({20, 20, 20}, white, {black}, markContrast);
    EXPECT_GE(contrast(onBlack, black), markContrast);
    EXPECT_LT(contrast(onBlack, black), markContrast + 1);
}

TEST(Contrast, NothingIsStrongerThanTheStrongestColour) {
    EXPECT_EQ(readable(grey, black, {Color{60, 60, 60}}, textContrast), black);
}
