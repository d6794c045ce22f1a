// How a view takes hold of its control and lets it go.

#include "toolkit/control_view.h"

#include "toolkit/button.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

using namespace toolkit;

namespace {

/// What is shown at first is given to the core before anybody could see it change.
class ButtonView : public ControlView {
public:
    ButtonView(Button& button, std::string& shown) : ControlView(button), button_(button), shown_(shown) {
        shows(Property::Caption, [this] { shown_ += "caption " + button_.caption() + "; "; });
        showsChanges({Property::Focus, Property::Enabled}, [this] { shown_ += "enabled; "; });
    }

protected:
    void adoptDesign() override {
        shown_ += "design; ";
        if (button_.caption().empty()) button_.setCaption("Suchen");
    }

private:
    Button& button_;
    std::string& shown_;
};

class Views : public testing::Test {
protected:
    std::string shown;
    std::unique_ptr<Button> button = std::make_unique<Button>("cmdSearch");
    ButtonView view{*button, shown};
};

} // namespace

TEST_F(Views, BeforeItIsBoundNothingIsShown) {
    button->setCaption("Finden");
    EXPECT_EQ(shown, "");
    EXPECT_FALSE(button->attached());
}

TEST_F(Views, BindingAdoptsTheDesignAndThenShowsAllOfItOnce) {
    view.bind();
    EXPECT_EQ(shown, "design; caption Suchen; ");
    EXPECT_TRUE(button->attached());
}

TEST_F(Views, AChangeIsShown) {
    view.bind();
    shown.clear();
    button->setEnabled(false);
    button->setCaption("Finden");
    EXPECT_EQ(shown, "enabled; caption Finden; ");
}

TEST_F(Views, AReleasedControlIsFree) {
    view.bind();
    view.release();
    shown.clear();
    button->setCaption("Finden");
    view.show(Property::Caption);
    view.release();
    EXPECT_EQ(shown, "");
    EXPECT_FALSE(button->attached());
}

TEST_F(Views, AControlThatIsGoneIsLeftAlone) {
    view.bind();
    view.abandon();
    button.reset();
    shown.clear();
    view.show(Property::Caption);
    view.release();
    EXPECT_EQ(shown, "");
}
