// The capacity display.

#include "main_window.h"

using unit::GB;
using unit::MainWindow;
using unit::MB;

class Capacity : public MainWindow {
protected:
    Capacity() { start(); }

    void show(std::uint64_t total, std::uint64_t free) {
        computer().drives["D:\\"].total = total;
        computer().drives["D:\\"].free = free;
        drive().GetDriveCapacity();
    }
    void unit(std::int16_t index) {
        event([this, index] { window().cmbSize.choose(index); });
    }
    /// Size, free and used, as shown.
    std::string figures() {
        return window().lblHDSize.caption() + " " + window().lblHDFree.caption() + " " +
               window().lblHDUsed.caption();
    }
    std::string percentage() {
        const auto& texts = window().Picture1.texts();
        return texts.size() == 1 ? texts[0].text : "no text";
    }
};

TEST_F(Capacity, MegabytesHaveTwoDecimals) {
    show(2147483648, 1610612736);
    EXPECT_EQ(figures(), "2048,00 1536,00 512,00");
    show(MB + MB / 4, MB / 2);
    EXPECT_EQ(figures(), "1,25 0,50 0,75");
}

TEST_F(Capacity, GigabytesHaveThreeDecimals) {
    unit(1);
    show(2147483648, 1610612736);
    EXPECT_EQ(figures(), "2,000 1,500 0,500");
    show(GB + GB / 8, GB / 1024);
    EXPECT_EQ(figures(), "1,125 0,001 1,124");
}

TEST_F(Capacity, TakesTheUsersDecimalSeparator) {
    computer().separator = ".";
    show(2147483648, 1610612736);
    EXPECT_EQ(figures(), "2048.00 1536.00 512.00");
}

TEST_F(Capacity, CountsAllFreeBytesNotTheUsersPartOnly) {
    show(100 * MB, 60 * MB);
    EXPECT_EQ(figures(), "100,00 60,00 40,00");
}

TEST_F(Capacity, TheLegendHasItsColours) {
    show(100 * MB, 60 * MB);
    EXPECT_EQ(window().lblHDUsedColor.backColor(), (toolkit::Color{222, 0, 0}));
    EXPECT_EQ(window().lblHDFreeColor.backColor(), (toolkit::Color{0, 222, 0}));
}

TEST_F(Capacity, TheBarShowsTheUsedShare) {
    show(100 * MB, 60 * MB);
    EXPECT_EQ(percentage(), "40 %");
    show(1000 * MB, 335 * MB);
    EXPECT_EQ(percentage(), "67 %");
    show(100 * MB, 0);
    EXPECT_EQ(percentage(), "100 %");
}

TEST_F(Capacity, AShareBelowOneIsShownAsOne) {
    show(1000 * MB, 996 * MB);
    EXPECT_EQ(percentage(), "1 %");
    show(1000 * MB, 1000 * MB);
    EXPECT_EQ(percentage(), "1 %");
    EXPECT_FALSE(window().Picture1.rectangles().empty());
}

TEST_F(Capacity, TheBarBeginsInTheEndColourEachTime) {
    for (int i = 0; i < 2; ++i) {
        show(100 * MB, 50 * MB);
        EXPECT_EQ(window().Picture1.rectangles().front().color, (toolkit::Color{0, 0, 200}));
        EXPECT_EQ(window().Picture1.rectangles()[49].color, (toolkit::Color{0, 0, 151}));
    }
}

TEST_F(Capacity, AnotherUnitLeavesTheBarAsItIs) {
    show(1000 * MB, 333 * MB);
    const auto before = window().Picture1.rectangles();
    unit(1);
    const auto& after = window().Picture1.rectangles();
    EXPECT_EQ(figures(), "0,977 0,325 0,651");
    ASSERT_EQ(after.size(), before.size());
    for (std::size_t i = 0; i < before.size(); ++i) {
        EXPECT_EQ(after[i].left, before[i].left);
        EXPECT_EQ(after[i].right, before[i].right);
        EXPECT_EQ(after[i].color, before[i].color);
    }
}

TEST_F(Capacity, ADriveWithoutASizeHasNoCapacities) {
    show(100 * MB, 60 * MB);
    show(0, 0);
    EXPECT_EQ(figures(), "  ");
    EXPECT_TRUE(window().Picture1.rectangles().empty());
    EXPECT_TRUE(window().Picture1.texts().empty());
}

TEST_F(Capacity, AnotherUnitShowsThatTheStickIsGone) {
    pullOut("D:\\");
    unit(1);
    EXPECT_EQ(figures(), "  ");
    EXPECT_EQ(window().StatusBar1.panel(1).text(), "No Stick");
    EXPECT_EQ(window().cmdChoose.caption(), "USB Stick einstecken");
    EXPECT_EQ(window().lblSize[0].caption(), "GB");
    EXPECT_FALSE(ended());
}

TEST_F(Capacity, WithoutAUnitItIsInMegabytes) {
    show(100 * MB, 60 * MB);
    const std::string inMegabytes = figures();
    unit(-1);
    drive().GetDriveCapacity();
    EXPECT_EQ(figures(), inMegabytes);
}
