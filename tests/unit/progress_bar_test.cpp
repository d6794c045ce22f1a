// The gradient bar, rectangle by rectangle. The box is 1000 wide and 100 high.

#include "main_window.h"

#include "widgets/cProgressBar.h"

#include <algorithm>

using toolkit::Color;
using toolkit::PictureBox;

namespace {

class HundredByForty : public PictureBox::Measure {
public:
    PictureBox::Size textSize(const std::string&) const override { return {100, 40}; }
};

class ProgressBar : public testing::Test {
protected:
    ProgressBar() {
        bar.StartFarbe(0, 0, 100);
        bar.EndFarbe(0, 0, 200);
        box.setMeasure(&measure);
    }

    void show(double value, double min = 0, double max = 100, bool text = true) {
        bar.ShowProgress(box, value, min, max, text);
    }
    const std::vector<PictureBox::Rectangle>& rectangles() const { return box.rectangles(); }
    std::string text() const { return box.texts().empty() ? "" : box.texts()[0].text; }

    static void expectRectangle(const PictureBox::Rectangle& r, double left, double right, Color color) {
        EXPECT_NEAR(r.left, left, 1e-9);
        EXPECT_NEAR(r.right, right, 1e-9);
        EXPECT_EQ(r.top, 0);
        EXPECT_EQ(r.bottom, 100);
        EXPECT_EQ(r.color, color);
    }

    HundredByForty measure;
    PictureBox box{"pic"};
    cProgressBar bar;
};

} // namespace

TEST_F(ProgressBar, FillsItsPartInTheGivenColours) {
    show(50);
    // Length: 9.98 × 50 = 499. Steps 0.00 to 0.49: the sum of fifty steps lies just above 0.50, and so does
    // the rest's above 1.
    ASSERT_EQ(rectangles().size(), 50U + 50U);
    EXPECT_EQ(rectangles()[49].color.red, 0);
    EXPECT_EQ(rectangles()[50].color.red, 100);
    expectRectangle(rectangles()[0], 0, 4.99, {0, 0, 200});
    expectRectangle(rectangles()[1], 4.99, 9.98, {0, 0, 199});
    expectRectangle(rectangles()[25], 124.75, 129.74, {0, 0, 175});
    expectRectangle(rectangles()[49], 244.51, 249.5, {0, 0, 151});
}

TEST_F(ProgressBar, FillsTheRestFromRedToGreenByTheWholeWidth) {
    show(50);
    const auto first = static_cast<std::size_t>(std::find_if(rectangles().begin(), rectangles().end(),
                                                             [](const auto& r) { return r.color.red > 0; }) -
                                                rectangles().begin());
    expectRectangle(rectangles()[first], 249.5, 510, {100, 100, 0});
    expectRectangle(rectangles()[first + 1], 254.49, 520, {98, 102, 0});
    expectRectangle(rectangles()[first + 40], 449.1, 910, {20, 180, 0});
}

TEST_F(ProgressBar, NumberOfStepsIsThatOfTheAccumulatedSum) {
    for (const int value : {1, 7, 30, 50, 99, 100}) {
        SCOPED_TRACE(value);
        std::size_t filled = 0;
        std::size_t rest = 0;
        for (double t = 0; t <= value / 100.0;)
            filled++, t += 0.01;
        for (double t = value / 100.0; t <= 1.0;)
            rest++, t += 0.01;
        show(value);
        EXPECT_EQ(rectangles().size(), filled + rest);
        EXPECT_LE(filled, 101U);
        EXPECT_LE(rest, 101U);
        bar.StartFarbe(0, 0, 100);
        bar.EndFarbe(0, 0, 200);
    }
}

TEST_F(ProgressBar, AFullBarIsTwoUnitsShorterThanTheBox) {
    show(100);
    EXPECT_NEAR(rectangles()[99].right, 998, 1e-6) << "the hundredth step";
    const PictureBox::Rectangle& rest = rectangles().back();
    EXPECT_NEAR(rest.left, 998, 1e-9);
    EXPECT_NEAR(rest.right, 1010, 1e-9);
    EXPECT_EQ(rest.color, (Color{0, 200, 0}));
}

TEST_F(ProgressBar, LengthIsRoundedHalvesToTheEvenNumber) {
    show(25); // 249.5 becomes 250
    EXPECT_NEAR(rectangles()[1].left, 2.5, 1e-9);
    bar.EndFarbe(0, 0, 200);
    show(75); // 748.5 becomes 748
    EXPECT_NEAR(rectangles()[1].left, 7.48, 1e-9);
}

TEST_F(ProgressBar, ColoursAreRoundedHalvesToTheEvenNumber) {
    bar.StartFarbe(0, 0, 0);
    bar.EndFarbe(50, 150, 250);
    show(10);
    EXPECT_EQ(rectangles()[1].color, (Color{50, 148, 248})) << "49.5, 148.5 and 247.5";
}

TEST_F(ProgressBar, ColoursStayRedAndGreenAfterTheFirstCall) {
    show(50);
    show(50);
    EXPECT_EQ(rectangles()[0].color, (Color{200, 0, 0}));
    EXPECT_EQ(rectangles()[1].color, (Color{198, 2, 0}));
    EXPECT_EQ(rectangles()[25].color, (Color{150, 50, 0}));
}

TEST_F(ProgressBar, ColoursStayAsTheyAreWhenNothingIsDrawn) {
    show(0);
    show(50);
    EXPECT_EQ(rectangles()[0].color, (Color{0, 0, 200}));
}

TEST_F(ProgressBar, NothingIsLeftOfAnEarlierDrawing) {
    show(50);
    const auto count = rectangles().size();
    show(50);
    EXPECT_EQ(rectangles().size(), count);
    EXPECT_EQ(box.texts().size(), 1U);
}

TEST_F(ProgressBar, BelowOneTheBoxIsClearedAndStaysSo) {
    for (const double value : {0.0, 0.99, -5.0}) {
        show(50);
        show(value);
        EXPECT_TRUE(rectangles().empty()) << value;
        EXPECT_TRUE(box.texts().empty()) << value;
    }
}

TEST_F(ProgressBar, TheValueIsHeldWithinItsBounds) {
    show(200);
    EXPECT_EQ(text(), "100 %");
    show(3, 10, 100);
    EXPECT_EQ(text(), "10 %");
    EXPECT_NEAR(rectangles()[1].left, 1.0, 1e-9) << "9.98 × 10 is 100";
}

TEST_F(ProgressBar, PercentageIsTheShareOfMaxRoundedUpFromTheHalf) {
    show(49.4);
    EXPECT_EQ(text(), "49 %");
    show(49.5);
    EXPECT_EQ(text(), "50 %");
    show(50, 20, 200);
    EXPECT_EQ(text(), "25 %") << "whatever min is";
}

TEST_F(ProgressBar, WithoutAMaximumNothingIsDrawn) {
    show(50, 0, 0);
    EXPECT_TRUE(rectangles().empty());
    EXPECT_EQ(text(), "");
}

TEST_F(ProgressBar, WithoutAMaximumThePercentageIs100) {
    show(1, 5, 0); // min wins
    EXPECT_EQ(text(), "100 %");
}

TEST_F(ProgressBar, TextOnlyWhenItIsAskedFor) {
    show(50, 0, 100, false);
    EXPECT_FALSE(rectangles().empty());
    EXPECT_TRUE(box.texts().empty());
}

TEST_F(ProgressBar, TextStandsInTheMiddle) {
    show(50);
    ASSERT_EQ(box.texts().size(), 1U);
    EXPECT_EQ(box.texts()[0].x, 450);
    EXPECT_EQ(box.texts()[0].y, 30);
}

TEST_F(ProgressBar, TextIsBlackOnBrightAndWhiteOnDark) {
    bar.StartFarbe(255, 255, 255);
    bar.EndFarbe(255, 255, 255);
    show(100);
    EXPECT_EQ(box.texts()[0].color, toolkit::black);
    bar.StartFarbe(0, 0, 0);
    bar.EndFarbe(0, 0, 0);
    show(100);
    EXPECT_EQ(box.texts()[0].color, toolkit::white);
}

TEST_F(ProgressBar, BrightnessIsWeighedByChannelAndMoreThan127IsBright) {
    // A full bar has the text on the gradient's own colour.
    const auto colourOn = [this](std::int16_t red, std::int16_t green, std::int16_t blue) {
        bar.StartFarbe(red, green, blue);
        bar.EndFarbe(red, green, blue);
        show(100);
        return box.texts()[0].color;
    };
    EXPECT_EQ(colourOn(127, 127, 127), toolkit::white);
    EXPECT_EQ(colourOn(128, 128, 128), toolkit::black);
    EXPECT_EQ(colourOn(0, 217, 0), toolkit::black) << "128.03";
    EXPECT_EQ(colourOn(0, 216, 0), toolkit::white) << "127.44";
    EXPECT_EQ(colourOn(255, 0, 255), toolkit::white) << "104.55";
}

TEST_F(ProgressBar, SwitchesAutoRedrawOn) {
    show(0);
    EXPECT_TRUE(box.autoRedraw());
}

TEST_F(ProgressBar, ChannelsAreNotTested) {
    bar.StartFarbe(-500, 0, 1000);
    bar.EndFarbe(300, -1, 32767);
    show(50);
    EXPECT_EQ(rectangles()[0].color, (Color{255, 0, 255}));
}
