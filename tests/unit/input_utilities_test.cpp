#include "main_window.h"

#include "app/input_utilities.h"

using unit::MainWindow;

TEST(KeyFilter, LetsDigitsAndBackspaceThrough) {
    for (std::int16_t code = 0; code < 300; ++code) {
        const bool passes = code == 8 || (code >= 48 && code <= 57);
        EXPECT_EQ(app::digitsOnly(code), passes ? code : 0) << code;
    }
    EXPECT_EQ(app::digitsOnly(-1), 0);
}

class IntervalText : public MainWindow {
protected:
    IntervalText() { start(); }
    std::string text(std::int32_t minutes) { return app::intervalText(window(), minutes); }
};

TEST_F(IntervalText, WithoutAValueTheUserIsTold) {
    EXPECT_EQ(text(0), "20");
    ASSERT_EQ(computer().messages.size(), 1U);
    EXPECT_EQ(computer().messages[0].text, "Kein Wert eingegeben. Es wird autom. 20 minuten eingetragen");
    EXPECT_EQ(computer().messages[0].style, 64);
    EXPECT_EQ(computer().messages[0].title, unit::title);
}

TEST_F(IntervalText, UpToSixtyAreMinutes) {
    EXPECT_EQ(text(1), "1 min");
    EXPECT_EQ(text(45), "45 min");
    EXPECT_EQ(text(60), "60 min");
    EXPECT_EQ(text(-5), "-5 min");
    EXPECT_EQ(text(-500), "-500 min");
    EXPECT_TRUE(computer().messages.empty());
}

TEST_F(IntervalText, BeyondSixtyTheHoursAreRoundedHalvesToTheEvenNumber) {
    EXPECT_EQ(text(61), "1h und 01 min");
    EXPECT_EQ(text(89), "1h und 29 min");
    EXPECT_EQ(text(90), "2h und 30 min");
    EXPECT_EQ(text(120), "2h und 00 min");
    EXPECT_EQ(text(150), "2h und 30 min");
    EXPECT_EQ(text(151), "3h und 31 min");
    EXPECT_EQ(text(210), "4h und 30 min");
    EXPECT_EQ(text(600), "10h und 00 min");
}
