#include "main_window.h"

#include "platform/number_text.h"

using namespace platform;
using unit::errorOf;

class NumberText : public testing::Test {
protected:
    NumberText() { fake::reset(); }
    ~NumberText() override { fake::reset(); }

    static void separator(const char* text) { fake::computer().separator = text; }
    static int numberError(const std::string& text) {
        return errorOf([&] { numberFromText(text); });
    }
    static int integerError(const std::string& text) {
        return errorOf([&] { integer16FromText(text); });
    }
};

TEST_F(NumberText, HasADigitBeforeTheSeparatorAndAllDecimals) {
    EXPECT_EQ(formatNumber(0, 2), "0,00");
    EXPECT_EQ(formatNumber(0.5, 2), "0,50");
    EXPECT_EQ(formatNumber(0.001, 3), "0,001");
    EXPECT_EQ(formatNumber(1234567, 2), "1234567,00") << "no thousands";
    EXPECT_EQ(formatNumber(17179869184.0, 3), "17179869184,000");
    EXPECT_EQ(formatNumber(-1.5, 2), "-1,50");
    EXPECT_EQ(formatNumber(-0.001, 2), "0,00");
}

TEST_F(NumberText, RoundsHalvesAwayFromZero) {
    EXPECT_EQ(formatNumber(0.125, 2), "0,13");
    EXPECT_EQ(formatNumber(0.375, 2), "0,38");
    EXPECT_EQ(formatNumber(-0.125, 2), "-0,13");
    EXPECT_EQ(formatNumber(0.0625, 3), "0,063");
    EXPECT_EQ(formatNumber(9.999, 2), "10,00");
    EXPECT_EQ(formatNumber(4.994, 2), "4,99");
}

TEST_F(NumberText, TakesWhateverSeparatorTheUserHas) {
    separator(".");
    EXPECT_EQ(formatNumber(1.5, 2), "1.50");
    separator("\xD9\xAB");
    EXPECT_EQ(formatNumber(1.5, 2), "1\xD9\xAB"
                                    "50");
    EXPECT_EQ(numberFromText("1\xD9\xAB"
                             "50"),
              1.5);
}

TEST_F(NumberText, IsReadBackWithTheSameSeparator) {
    for (const char* text : {",", "."}) {
        separator(text);
        for (const double value : {0.0, 4.99, 5.0, 3072.5, 16777216.25})
            EXPECT_EQ(numberFromText(formatNumber(value, 2)), value);
    }
}

TEST_F(NumberText, ReadsSignsAndBlanks) {
    EXPECT_EQ(numberFromText(" 5 "), 5);
    EXPECT_EQ(numberFromText("-5,5"), -5.5);
    EXPECT_EQ(numberFromText("+5"), 5);
    EXPECT_EQ(numberFromText(",5"), 0.5);
    EXPECT_EQ(numberFromText("5,"), 5);
}

TEST_F(NumberText, WhatIsNoNumberIsAnError) {
    for (const char* text :
         {"", " ", "x", "5x", "5 5", "1,2,3", "1.5", "+-5", "++5", "-", ",", "inf", "nan", "0x10"})
        EXPECT_EQ(numberError(text), 13) << text;
    separator(".");
    EXPECT_EQ(numberError("1,5"), 13);
    EXPECT_EQ(numberFromText("1.5"), 1.5);
}

TEST_F(NumberText, WhatIsTooLargeOverflows) {
    EXPECT_EQ(numberError("1" + std::string(400, '0')), 6);
    EXPECT_EQ(numberError("324e324"), 6);
    EXPECT_EQ(numberError("324e324e"), 13) << "no number at all, however large its beginning is";
    EXPECT_EQ(numberError("1" + std::string(400, '0') + "x"), 13);
}

TEST_F(NumberText, SixteenBitNumbersAreRoundedHalvesToTheEvenOne) {
    EXPECT_EQ(integer16FromText("1"), 1);
    EXPECT_EQ(integer16FromText("-1"), -1);
    EXPECT_EQ(integer16FromText("0,5"), 0);
    EXPECT_EQ(integer16FromText("1,5"), 2);
    EXPECT_EQ(integer16FromText("2,5"), 2);
    EXPECT_EQ(integer16FromText("32767"), 32767);
    EXPECT_EQ(integer16FromText("-32768"), -32768);
    EXPECT_EQ(integer16FromText("32767,4"), 32767);
}

TEST_F(NumberText, SixteenBitNumbersHaveTheirBounds) {
    for (const char* text : {"32768", "-32769", "32767,5", "99999999999"})
        EXPECT_EQ(integerError(text), 6) << text;
    EXPECT_EQ(integerError("x"), 13);
}

TEST_F(NumberText, RoundingToTheEvenNumber) {
    EXPECT_EQ(roundHalfToEven(0.5), 0);
    EXPECT_EQ(roundHalfToEven(1.5), 2);
    EXPECT_EQ(roundHalfToEven(2.5), 2);
    EXPECT_EQ(roundHalfToEven(2.51), 3);
    EXPECT_EQ(roundHalfToEven(2.49), 2);
    EXPECT_EQ(roundHalfToEven(-0.5), 0);
    EXPECT_EQ(roundHalfToEven(-1.5), -2);
    EXPECT_EQ(roundHalfToEven(-2.5), -2);
    EXPECT_EQ(roundHalfToEven(7), 7);
}
