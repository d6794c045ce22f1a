// When a control fires and what it tells its view.

#include "main_window.h"
#include "recording_view.h"

#include <vector>

using namespace toolkit;
using unit::errorOf;
using unit::RecordingView;

TEST(Control, SetterTellsTheViewOnlyWhenTheValueChanges) {
    Label label("lbl");
    RecordingView view;
    label.attach(&view);
    label.setCaption("a");
    label.setCaption("a");
    label.setEnabled(true);
    label.setEnabled(false);
    label.setVisible(false);
    label.setToolTip("tip");
    label.setToolTip("tip");
    EXPECT_EQ(view.shown,
              (std::vector{Property::Caption, Property::Enabled, Property::Visible, Property::ToolTip}));
    EXPECT_EQ(label.caption(), "a");
    EXPECT_EQ(label.toolTip(), "tip");
}

TEST(Control, KeepsItsValuesWithoutAView) {
    Button button("cmd");
    button.setCaption("a");
    RecordingView view;
    button.attach(&view);
    EXPECT_TRUE(button.attached());
    button.attach(nullptr);
    button.setCaption("b");
    EXPECT_FALSE(button.attached());
    EXPECT_TRUE(view.shown.empty());
    EXPECT_EQ(button.caption(), "b");
}

TEST(LabelBackColor, IsTheWindowsUntilItIsSet) {
    Label label("lbl");
    RecordingView view;
    label.attach(&view);
    EXPECT_FALSE(label.backColor());
    label.setBackColor({0, 0, 0});
    label.setBackColor({0, 0, 0});
    EXPECT_EQ(label.backColor(), (Color{0, 0, 0}));
    EXPECT_EQ(view.shown, std::vector{Property::BackColor});
}

TEST(ButtonClick, FiresWhenEnabledOnly) {
    Button button("cmd");
    button.click(); // no handler
    int clicks = 0;
    button.onClick = [&] { ++clicks; };
    button.click();
    button.setEnabled(false);
    button.click();
    EXPECT_EQ(clicks, 1);
}

class Options : public testing::Test {
protected:
    Options() {
        options.onClick = [this](std::int16_t index) { fired.push_back(index); };
    }
    OptionArray<3> options{"opt"};
    std::vector<std::int16_t> fired;
};

TEST_F(Options, ElementsAreNamedByTheirIndex) {
    EXPECT_EQ(options[0].name(), "opt_0");
    EXPECT_EQ(options[2].name(), "opt_2");
    EXPECT_THROW(options[3], std::out_of_range);
}

TEST_F(Options, SelectingByProgramFiresAndUnselectsTheSiblings) {
    options[0].setValue(true);
    options[2].setValue(true);
    EXPECT_EQ(fired, (std::vector<std::int16_t>{0, 2}));
    EXPECT_FALSE(options[0].value());
    EXPECT_TRUE(options[2].value());
}

TEST_F(Options, SelectingTheSelectedOneFiresNothing) {
    options[1].setValue(true);
    options[1].setValue(true);
    options[1].click();
    EXPECT_EQ(fired, std::vector<std::int16_t>{1});
}

TEST_F(Options, UnselectingFiresNothing) {
    options[1].setValue(true);
    fired.clear();
    options[1].setValue(false);
    EXPECT_TRUE(fired.empty());
    EXPECT_FALSE(options[1].value());
}

TEST_F(Options, SiblingsAreUnselectedWhenTheClickComes) {
    options[0].setValue(true);
    bool siblingSelected = true;
    options.onClick = [&](std::int16_t) { siblingSelected = options[0].value(); };
    options[1].click();
    EXPECT_FALSE(siblingSelected);
}

TEST_F(Options, ADisabledOneIsDeafToTheUserButNotToTheProgram) {
    options[1].setEnabled(false);
    options[1].click();
    EXPECT_FALSE(options[1].value());
    options[1].setValue(true);
    EXPECT_EQ(fired, std::vector<std::int16_t>{1});
}

TEST_F(Options, BothViewsAreToldOfAChange) {
    options[0].setValue(true);
    RecordingView first, second;
    options[0].attach(&first);
    options[1].attach(&second);
    options[1].click();
    EXPECT_EQ(first.shown, std::vector{Property::Value});
    EXPECT_EQ(second.shown, std::vector{Property::Value});
}

TEST(CheckBoxValue, FiresWhenItChanges) {
    CheckBox box("chk");
    int clicks = 0;
    box.onClick = [&] { ++clicks; };
    box.setValue(CheckBox::Unchecked);
    EXPECT_EQ(clicks, 0);
    box.setValue(CheckBox::Checked);
    box.setValue(CheckBox::Checked);
    EXPECT_EQ(clicks, 1);
    box.setValue(CheckBox::Grayed);
    EXPECT_EQ(clicks, 2);
}

TEST(CheckBoxValue, AClickTurnsItOverAndFires) {
    CheckBox box("chk");
    std::vector<std::int16_t> values;
    box.onClick = [&] { values.push_back(box.value()); };
    box.click();
    box.click();
    box.setValue(CheckBox::Grayed);
    box.click();
    box.setEnabled(false);
    box.click();
    EXPECT_EQ(values, (std::vector<std::int16_t>{1, 0, 2, 0}));
}

TEST(CheckBoxValue, KnowsThreeStates) {
    CheckBox box("chk");
    EXPECT_EQ(errorOf([&] { box.setValue(-1); }), 5);
    EXPECT_EQ(errorOf([&] { box.setValue(3); }), 5);
    EXPECT_EQ(box.value(), CheckBox::Unchecked);
}

class Combo : public testing::Test {
protected:
    Combo() {
        combo.addItem("MB", 2);
        combo.addItem("GB", 3);
        combo.onClick = [this] { fired.push_back(combo.listIndex()); };
    }
    ComboBox combo{"cmb"};
    std::vector<std::int16_t> fired;
};

TEST_F(Combo, NothingIsSelectedAtFirst) {
    EXPECT_EQ(combo.listIndex(), -1);
    EXPECT_EQ(combo.text(), "");
    EXPECT_EQ(errorOf([this] { combo.itemData(); }), 9);
}

TEST_F(Combo, SelectingFiresEveryTime) {
    combo.setListIndex(1);
    combo.setListIndex(1);
    combo.choose(1);
    combo.choose(0);
    EXPECT_EQ(fired, (std::vector<std::int16_t>{1, 1, 1, 0}));
    EXPECT_EQ(combo.text(), "MB");
    EXPECT_EQ(combo.itemData(), 2);
}

TEST_F(Combo, SelectingNoneFiresEveryTimeToo) {
    combo.setListIndex(0);
    combo.setListIndex(-1);
    combo.setListIndex(-1);
    EXPECT_EQ(fired, (std::vector<std::int16_t>{0, -1, -1}));
    EXPECT_EQ(combo.text(), "");
}

TEST_F(Combo, AnIndexWithoutAnEntryIsAnError) {
    EXPECT_EQ(errorOf([this] { combo.setListIndex(2); }), 5);
    EXPECT_EQ(errorOf([this] { combo.setListIndex(-2); }), 5);
    EXPECT_EQ(combo.listIndex(), -1);
    EXPECT_TRUE(fired.empty());
}

TEST_F(Combo, ADisabledOneIsDeafToTheUser) {
    combo.setEnabled(false);
    combo.choose(1);
    EXPECT_EQ(combo.listIndex(), -1);
}

TEST_F(Combo, TheViewHearsOfEntriesAndOfAChangedSelection) {
    RecordingView view;
    combo.attach(&view);
    combo.addItem("TB", 4);
    combo.setListIndex(2);
    combo.setListIndex(2);
    EXPECT_EQ(view.shown, (std::vector{Property::Items, Property::ListIndex}));
}

TEST(TextBoxKey, IsReportedBeforeTheTextChanges) {
    TextBox box("txt");
    box.setText("a");
    std::string atKeyPress;
    char32_t key = 0;
    box.onKeyPress = [&](char32_t c) { key = c, atKeyPress = box.text(); };
    box.keyPress(U'ü');
    box.typed("aü");
    EXPECT_EQ(key, U'ü');
    EXPECT_EQ(atKeyPress, "a");
    EXPECT_EQ(box.text(), "aü");
}

TEST(TextBoxKey, IsNotReportedForTextSetByProgramNorWhenDisabled) {
    TextBox box("txt");
    int keys = 0;
    box.onKeyPress = [&](char32_t) { ++keys; };
    box.setText("a");
    box.typed("ab");
    box.setEnabled(false);
    box.keyPress(U'a');
    EXPECT_EQ(keys, 0);
}

TEST(TextBoxSelection, IsToldToTheViewAndLostByTyping) {
    TextBox box("txt");
    RecordingView view;
    box.setText("abc");
    box.attach(&view);
    box.setSelection({1, 2});
    box.setFocus();
    box.setFocus();
    EXPECT_EQ(view.shown, (std::vector{Property::Selection, Property::Focus, Property::Focus}));
    box.typed("x");
    EXPECT_EQ(box.selection(), (TextBox::Selection{0, 0}));
    EXPECT_EQ(view.shown.size(), 3U) << "what the user typed is in view already";
}

TEST(TimerTick, FiresWhileEnabled) {
    Timer timer("tmr", std::chrono::milliseconds(4000), true);
    int ticks = 0;
    timer.onTimer = [&] { ++ticks; };
    EXPECT_EQ(timer.interval(), std::chrono::milliseconds(4000));
    timer.tick();
    timer.tick();
    timer.setEnabled(false);
    timer.tick();
    EXPECT_EQ(ticks, 2);
    EXPECT_FALSE(Timer("off", std::chrono::milliseconds(1), false).enabled());
}

TEST(TimerTick, IsNotDeliveredWhileItsHandlerRuns) {
    Timer timer("tmr", std::chrono::milliseconds(1), true);
    int ticks = 0;
    timer.onTimer = [&] {
        if (++ticks == 1) timer.tick();
        if (ticks == 2) throw Unwind{};
    };
    timer.tick();
    EXPECT_EQ(ticks, 1);
    EXPECT_THROW(timer.tick(), Unwind);
    timer.onTimer = [&] { ++ticks; };
    timer.tick();
    EXPECT_EQ(ticks, 3) << "an exception leaves the timer as it was";
}
