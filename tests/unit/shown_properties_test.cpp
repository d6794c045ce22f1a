// What a view shows, and in which order.

#include "toolkit/shown_properties.h"

#include <gtest/gtest.h>

#include <string>

using namespace toolkit;

namespace {

class Shown : public testing::Test {
protected:
    ShownProperties::Show note(const std::string& what) {
        return [this, what] { shown += what + " "; };
    }

    ShownProperties properties;
    std::string shown;
};

} // namespace

TEST_F(Shown, AtFirstAllInTheirOrder) {
    properties.add(Property::Visible, note("visible"));
    properties.add(Property::Caption, note("caption"));
    properties.add(Property::Enabled, note("enabled"));
    properties.showAll();
    EXPECT_EQ(shown, "visible caption enabled ");
}

TEST_F(Shown, AChangeShowsThatPropertyAlone) {
    properties.add(Property::Visible, note("visible"));
    properties.add(Property::Caption, note("caption"));
    properties.show(Property::Caption);
    EXPECT_EQ(shown, "caption ");
}

TEST_F(Shown, WhatHasNoEntryIsNotShown) {
    properties.add(Property::Caption, note("caption"));
    properties.show(Property::Focus);
    EXPECT_EQ(shown, "");
}

TEST_F(Shown, SeveralEntriesHaveTheirTurns) {
    properties.add(Property::Enabled, note("part"));
    properties.addChanges({Property::Enabled}, note("neighbours"));
    properties.show(Property::Enabled);
    EXPECT_EQ(shown, "part neighbours ");
}

TEST_F(Shown, SomeAreShownWhenTheyChangeAndNotAtFirst) {
    properties.addChanges({Property::Focus, Property::Selection}, note("cursor"));
    properties.showAll();
    EXPECT_EQ(shown, "");
    properties.show(Property::Selection);
    properties.show(Property::Focus);
    EXPECT_EQ(shown, "cursor cursor ");
}

TEST_F(Shown, AConditionHoldsAtFirstOnly) {
    bool hidden = false;
    int questions = 0;
    properties.add(Property::Visible, note("visible"), [&] {
        ++questions;
        return hidden;
    });
    properties.showAll();
    EXPECT_EQ(shown, "");
    properties.show(Property::Visible);
    EXPECT_EQ(shown, "visible ");
    EXPECT_EQ(questions, 1) << "a change is shown whatever it says";
    hidden = true;
    properties.showAll();
    EXPECT_EQ(shown, "visible visible ");
}
