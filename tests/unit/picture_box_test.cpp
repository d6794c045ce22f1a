#include "main_window.h"
#include "recording_view.h"

#include <vector>

using namespace toolkit;

namespace {

/// Every character is 10 wide, every text 20 high.
class TenByTwenty : public PictureBox::Measure {
public:
    PictureBox::Size textSize(const std::string& text) const override {
        return {10.0 * static_cast<double>(text.size()), 20};
    }
};

} // namespace

TEST(PictureBoxDrawing, IsKeptInOrder) {
    PictureBox box("pic");
    unit::RecordingView view;
    box.attach(&view);
    box.fillRectangle({0, 0, 1, 1, black});
    box.fillRectangle({1, 0, 2, 1, white});
    box.print("x");
    ASSERT_EQ(box.rectangles().size(), 2U);
    EXPECT_EQ(box.rectangles()[1].left, 1);
    EXPECT_EQ(view.shown, std::vector(3, Property::Drawing));
}

TEST(PictureBoxDrawing, ClearingEmptiesItAndReturnsToTheCorner) {
    PictureBox box("pic");
    box.fillRectangle({0, 0, 1, 1, black});
    box.print("x");
    box.setCurrentX(5);
    box.setCurrentY(6);
    unit::RecordingView view;
    box.attach(&view);
    box.cls();
    box.cls();
    EXPECT_TRUE(box.rectangles().empty());
    EXPECT_TRUE(box.texts().empty());
    EXPECT_EQ(box.currentX(), 0);
    EXPECT_EQ(box.currentY(), 0);
    EXPECT_EQ(view.shown, std::vector{Property::Drawing}) << "an empty box has nothing to show anew";
}

TEST(PictureBoxText, IsPrintedAtThePositionInTheForegroundColour) {
    const TenByTwenty measure;
    PictureBox box("pic");
    box.setMeasure(&measure);
    box.setCurrentX(3);
    box.setCurrentY(4);
    box.setForeColor({1, 2, 3});
    box.print("abc");
    ASSERT_EQ(box.texts().size(), 1U);
    const PictureBox::Text& text = box.texts()[0];
    EXPECT_EQ(text.text, "abc");
    EXPECT_EQ(text.x, 3);
    EXPECT_EQ(text.y, 4);
    EXPECT_EQ(text.size.width, 30);
    EXPECT_EQ(text.size.height, 20);
    EXPECT_EQ(text.color, (Color{1, 2, 3}));
    EXPECT_EQ(box.textWidth("ab"), 20);
    EXPECT_EQ(box.textHeight("ab"), 20);
}

TEST(PictureBoxText, HasNoSizeWhereNothingMeasuresIt) {
    EXPECT_EQ(PictureBox("pic").textWidth("ab"), 0);
    EXPECT_EQ(PictureBox("pic").textHeight("ab"), 0);
}

TEST(PictureBoxPoint, HasTheColourOfWhatWasDrawnLast) {
    PictureBox box("pic");
    EXPECT_EQ(box.point(1, 1), white);
    box.fillRectangle({0, 0, 10, 10, {1, 1, 1}});
    box.fillRectangle({5, 0, 15, 10, {2, 2, 2}});
    EXPECT_EQ(box.point(4.9, 0), (Color{1, 1, 1}));
    EXPECT_EQ(box.point(5, 0), (Color{2, 2, 2}));
    EXPECT_EQ(box.point(15, 0), white) << "right and lower edges belong to the neighbour";
    EXPECT_EQ(box.point(0, 10), white);
}

TEST(PictureBoxAutoRedraw, IsOffAtFirst) {
    PictureBox box("pic");
    EXPECT_FALSE(box.autoRedraw());
    box.setAutoRedraw(true);
    EXPECT_TRUE(box.autoRedraw());
}
