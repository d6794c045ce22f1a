// The life of a window.

#include "main_window.h"
#include "recording_view.h"

#include "toolkit/combo_box.h"
#include "toolkit/pump.h"
#include "toolkit/text_box.h"
#include "toolkit/timer.h"

#include <vector>

using namespace toolkit;
using Texts = std::vector<std::string>;

class FormLife : public testing::Test {
protected:
    FormLife() {
        fake::reset();
        owner.show();
        fake::computer().windows.clear();
        form.onLoad = [this] { events.push_back("load"); };
        form.onQueryUnload = [this] { events.push_back("query"); };
        form.onUnload = [this] { events.push_back("unload"); };
    }
    ~FormLife() override { fake::reset(); }

    static const Texts& windows() { return fake::computer().windows; }

    Form owner{"Owner"};
    Form form{"Other"};
    Texts events;
};

TEST_F(FormLife, FindsItsControlsInWhateverCaseTheNameIsWritten) {
    Label label("lblName");
    form.add(label);
    EXPECT_EQ(form.find("lblName"), &label);
    EXPECT_EQ(form.find("LBLNAME"), &label);
    EXPECT_EQ(form.find("lblNam"), nullptr);
    EXPECT_EQ(form.find(""), nullptr);
}

TEST_F(FormLife, LoadsWithItsFirstShowOnly) {
    EXPECT_FALSE(form.loaded());
    EXPECT_EQ(form.handle(), 0);
    form.show(&owner);
    form.show(&owner);
    EXPECT_TRUE(form.loaded());
    EXPECT_EQ(form.handle(), fake::windowHandle);
    EXPECT_EQ(events, Texts{"load"});
    EXPECT_EQ(windows(), (Texts{"open Other", "open Other"}));
}

TEST_F(FormLife, ClosesInOrderAndOnce) {
    form.show();
    form.onQueryUnload = [this] {
        events.push_back("query");
        form.closeRequested();
    };
    form.closeRequested();
    form.closeRequested();
    EXPECT_EQ(events, (Texts{"load", "query", "unload"}));
    EXPECT_EQ(windows(), (Texts{"open Other", "close Other"}));
    EXPECT_FALSE(form.loaded());
}

TEST_F(FormLife, CanBeShownAgainAfterItWasClosed) {
    form.show();
    form.unload();
    form.show();
    EXPECT_TRUE(form.loaded());
    EXPECT_EQ(events, (Texts{"load", "query", "unload", "load"}));
    form.unload();
    EXPECT_EQ(events.size(), 6U);
}

TEST_F(FormLife, ModalReturnsWhenTheWindowIsClosed) {
    fake::computer().onModal = [this](Form& shown) {
        events.push_back("modal " + shown.name());
        shown.closeRequested();
    };
    form.showModal(owner);
    EXPECT_EQ(events, (Texts{"load", "modal Other", "query", "unload"}));
}

TEST_F(FormLife, ModalDoesNotOpenWhatItsLoadClosed) {
    form.onLoad = [this] { form.unload(); };
    form.showModal(owner);
    EXPECT_EQ(windows(), Texts{"close Other"});
}

TEST_F(FormLife, AClosingThatIsUnwoundCanBeginAnew) {
    form.show();
    form.onQueryUnload = [this] {
        events.push_back("query");
        if (events.size() == 2) throw Unwind{};
    };
    EXPECT_THROW(form.closeRequested(), Unwind);
    form.closeRequested();
    EXPECT_EQ(events, (Texts{"load", "query", "query", "unload"}));
}

TEST_F(FormLife, ModalUnwindsWhenTheProgramEnds) {
    fake::computer().onModal = [](Form&) { endAfterClosing(); };
    EXPECT_THROW(form.showModal(owner), Unwind);
}

TEST_F(FormLife, ComesBackFromAnIconOnlyWhenItIsLoaded) {
    form.restore();
    EXPECT_TRUE(windows().empty());
    form.show();
    form.restore();
    EXPECT_EQ(windows(), (Texts{"open Other", "restore Other"}));
}

TEST_F(FormLife, TellsItsWindowOfTitleAndIcon) {
    unit::RecordingView view;
    form.attach(&view);
    form.setCaption("Title");
    const base::Picture icon = iconResource(programIcon);
    form.setIcon(icon);
    form.setIcon(icon);
    EXPECT_EQ(view.shown, (std::vector{Property::Caption, Property::Icon}));
    form.attach(nullptr);
}

class FormTimers : public FormLife {
protected:
    FormTimers() {
        form.add(timer);
        timer.onTimer = [this] { events.push_back("tick"); };
    }

    Timer timer{"tmr", std::chrono::milliseconds(4000), true};
};

TEST_F(FormTimers, StartWhenTheLoadHasEnded) {
    unit::RecordingView view;
    timer.attach(&view);
    form.onLoad = [&] {
        EXPECT_TRUE(timer.enabled());
        EXPECT_FALSE(timer.running());
        view.shown.clear();
    };
    form.show();
    EXPECT_TRUE(timer.running());
    EXPECT_EQ(view.shown, std::vector{Property::Enabled}) << "the whole interval starts";
    timer.attach(nullptr);
}

TEST_F(FormTimers, DoNotTickWhileTheLoadLetsEventsRun) {
    fake::computer().onPump = [this] { timer.tick(); };
    fake::computer().onModal = [this](Form& shown) {
        timer.tick();
        shown.closeRequested();
    };
    Form question("Question");
    form.onLoad = [&] {
        DoEvents();
        question.showModal(owner);
        events.push_back("loaded");
    };
    form.show();
    timer.tick();
    EXPECT_EQ(events, (Texts{"loaded", "tick"}));
}

TEST_F(FormTimers, AreHeldInEveryLoad) {
    form.show();
    form.unload();
    form.onLoad = [this] { timer.tick(); };
    form.show();
    EXPECT_EQ(events, (Texts{"load", "query", "unload"}));
    EXPECT_TRUE(timer.running());
}

TEST_F(FormTimers, StayOffWhenTheLoadTurnsThemOff) {
    form.onLoad = [this] { timer.setEnabled(false); };
    form.show();
    timer.tick();
    EXPECT_FALSE(timer.running());
    EXPECT_TRUE(events.empty());
}

class EnterKey : public FormLife {
protected:
    EnterKey() {
        for (Control* control : std::initializer_list<Control*>{&main, &other, &box, &plainBox, &combo})
            form.add(*control);
        form.setDefaultButton(main);
        box.setEnterButton(other);
        main.onClick = [this] { events.push_back("main"); };
        other.onClick = [this] { events.push_back("other"); };
    }

    Button main{"cmdMain"};
    Button other{"cmdOther"};
    TextBox box{"txtBox"};
    TextBox plainBox{"txtPlain"};
    ComboBox combo{"cmb"};
};

TEST_F(EnterKey, PressesTheDefaultButton) {
    for (Control* focus : std::initializer_list<Control*>{nullptr, &plainBox, &combo})
        form.enterPressed(focus);
    EXPECT_EQ(events, (Texts{"main", "main", "main"}));
}

TEST_F(EnterKey, PressesTheButtonThatHasTheKeyboard) {
    form.enterPressed(&other);
    EXPECT_EQ(events, Texts{"other"});
}

TEST_F(EnterKey, PressesTheButtonOfATextBox) {
    EXPECT_EQ(form.enterButton(&box), &other);
    form.enterPressed(&box);
    EXPECT_EQ(events, Texts{"other"});
}

TEST_F(EnterKey, PressesNothingWhenThatButtonIsDisabled) {
    other.setEnabled(false);
    main.setEnabled(false);
    form.enterPressed(&box);
    form.enterPressed(nullptr);
    EXPECT_TRUE(events.empty());
}

TEST_F(EnterKey, PressesNothingWithoutAButton) {
    Form empty("Empty");
    empty.add(plainBox);
    EXPECT_EQ(empty.enterButton(&plainBox), nullptr);
    empty.enterPressed(&plainBox);
    EXPECT_TRUE(events.empty());
}

TEST_F(EnterKey, PressesNothingWhileAClickIsHandled) {
    main.onClick = [this] {
        events.push_back("begin");
        for (Control* focus : std::initializer_list<Control*>{nullptr, &main, &other, &box})
            form.enterPressed(focus);
        events.push_back("end");
    };
    main.click();
    EXPECT_EQ(events, (Texts{"begin", "end"}));
    form.enterPressed(&other);
    EXPECT_EQ(events, (Texts{"begin", "end", "other"}));
}

TEST_F(EnterKey, AClickStillCountsWhileAnotherOneIsHandled) {
    main.onClick = [this] {
        events.push_back("main");
        if (events.size() == 1) main.click();
        EXPECT_TRUE(main.handling());
    };
    main.click();
    EXPECT_EQ(events, (Texts{"main", "main"}));
    EXPECT_FALSE(main.handling());
}

TEST_F(EnterKey, WorksAgainAfterAHandlerThatWasLeft) {
    main.onClick = [] { throw Unwind{}; };
    EXPECT_THROW(main.click(), Unwind);
    form.enterPressed(&other);
    EXPECT_EQ(events, Texts{"other"});
}
