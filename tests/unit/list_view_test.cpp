// Lists in columns, and the helper for them.

#include "toolkit/list_view.h"

#include "main_window.h"
#include "recording_view.h"
#include "widgets/cLV.h"

#include <vector>

using toolkit::ListView;
using toolkit::Property;
using unit::errorOf;

class List : public testing::Test {
protected:
    List() {
        list.setView(ListView::Report);
        list.addColumn("Letter", 1800);
        list.addColumn("Label", 2000);
        list.addItem("E:\\");
        list.addItem("F:\\");
        list.attach(&view);
        list.onItemClick = [this](std::size_t item) { clicked.push_back(item); };
    }

    unit::RecordingView view;
    ListView list{"List"};
    std::vector<std::size_t> clicked;
};

TEST_F(List, HoldsColumnsAndRows) {
    ASSERT_EQ(list.columns().size(), 2U);
    EXPECT_EQ(list.columns()[1].header, "Label");
    EXPECT_EQ(list.columns()[1].width, 2000);
    EXPECT_EQ(list.addItem("G:\\"), 2U);
    list.setSubItem(2, 1, "STICK");
    EXPECT_EQ(list.items()[2], (ListView::Item{"G:\\", "STICK"}));
    EXPECT_EQ(list.items()[0], ListView::Item{"E:\\"});
    EXPECT_EQ(view.shown, (std::vector<Property>{Property::Items, Property::Items}));
}

TEST_F(List, TellsOfChangesOnly) {
    list.setSubItem(0, 1, "STICK");
    view.shown.clear();
    list.setSubItem(0, 1, "STICK");
    list.setColumnWidth(0, 1800);
    list.setView(ListView::Report);
    list.setSelected(-1);
    EXPECT_TRUE(view.shown.empty());
    list.setColumnWidth(0, 900);
    list.setSelected(1);
    EXPECT_EQ(view.shown, (std::vector<Property>{Property::Items, Property::ListIndex}));
}

TEST_F(List, HasNoOtherRowsAndColumns) {
    EXPECT_EQ(errorOf([this] { list.setSubItem(2, 1, "x"); }), 9);
    EXPECT_EQ(errorOf([this] { list.setSubItem(0, 2, "x"); }), 9);
    EXPECT_EQ(errorOf([this] { list.setSubItem(0, 0, "x"); }), 9) << "the row's own text is no sub-item";
    EXPECT_EQ(errorOf([this] { list.setColumnWidth(2, 1); }), 9);
}

TEST_F(List, AClickMarksTheRowAndIsReported) {
    list.click(1);
    EXPECT_EQ(list.selected(), 1);
    list.click(1);
    list.click(0);
    EXPECT_EQ(clicked, (std::vector<std::size_t>{1, 1, 0}));
    EXPECT_EQ(list.selected(), 0);
}

TEST_F(List, AMarkSetByTheProgramIsNoClick) {
    list.setSelected(1);
    EXPECT_EQ(list.selected(), 1);
    EXPECT_TRUE(clicked.empty());
}

TEST_F(List, ADisabledOneIsDeaf) {
    int doubleClicks = 0;
    list.onDoubleClick = [&doubleClicks] { ++doubleClicks; };
    list.doubleClick();
    list.setEnabled(false);
    list.click(1);
    list.doubleClick();
    EXPECT_EQ(list.selected(), -1);
    EXPECT_TRUE(clicked.empty());
    EXPECT_EQ(doubleClicks, 1);
}

TEST_F(List, ClicksWithoutRowOrHandlerDoNothing) {
    list.click(2);
    EXPECT_TRUE(clicked.empty());
    EXPECT_EQ(list.selected(), -1);
    list.onItemClick = nullptr;
    list.click(0);
    list.doubleClick();
    EXPECT_EQ(list.selected(), 0);
}

TEST_F(List, AHeaderThatNobodyGuardsMayChange) {
    constexpr std::int32_t changing = ListView::HeaderItemChanging;
    EXPECT_EQ(changing, -300);
    EXPECT_FALSE(list.headerNotify(changing));
    list.onHeaderNotify = [](std::int32_t code) { return code == changing; };
    EXPECT_TRUE(list.headerNotify(changing));
    EXPECT_FALSE(list.headerNotify(-301));
}

TEST_F(List, TheFlatLookIsAToggle) {
    const cLV helper;
    const toolkit::Form owner("Owner");
    const std::uint32_t original = list.headerStyle();
    EXPECT_EQ(original & ListView::HeaderButtons, 2U);
    EXPECT_EQ(helper.FlatListView(list, owner), 0);
    EXPECT_EQ(list.headerStyle(), original ^ 2U);
    EXPECT_EQ(view.shown, std::vector<Property>{Property::Drawing});
    EXPECT_EQ(helper.FlatListView(list, owner), 0);
    EXPECT_EQ(list.headerStyle(), original) << "the second time the buttons are back";
}

TEST_F(List, AHeaderWithoutTheButtonsGetsThem) {
    list.setHeaderStyle(0x50000000);
    cLV().FlatListView(list, toolkit::Form("Owner"));
    EXPECT_EQ(list.headerStyle(), 0x50000002U);
}

TEST_F(List, AStyleOfNothingIsNotSet) {
    list.setHeaderStyle(ListView::HeaderButtons);
    view.shown.clear();
    EXPECT_EQ(cLV().FlatListView(list, toolkit::Form("Owner")), 0);
    EXPECT_EQ(list.headerStyle(), ListView::HeaderButtons);
    EXPECT_TRUE(view.shown.empty());
}

TEST_F(List, OnlyAReportHasAHeader) {
    EXPECT_NE(cLV().GetHeaderHandle(list), 0);
    list.setView(ListView::Icons);
    EXPECT_EQ(cLV().GetHeaderHandle(list), 0);
}

TEST_F(List, TheBestWidthLeavesTheFirstColumnAlone) {
    list.addColumn("Third", 500);
    cLV().OptimalHeaderWidth(list);
    EXPECT_EQ(list.columns()[0].width, 1800);
    EXPECT_EQ(list.columns()[1].width, ListView::FitColumn);
    EXPECT_EQ(list.columns()[2].width, ListView::FitColumn);
}

TEST_F(List, TheBestWidthOfOneColumnOrNoneChangesNothing) {
    ListView one("One");
    cLV().OptimalHeaderWidth(one);
    EXPECT_TRUE(one.columns().empty());
    one.addColumn("Only", 700);
    cLV().OptimalHeaderWidth(one);
    EXPECT_EQ(one.columns()[0].width, 700);
}
