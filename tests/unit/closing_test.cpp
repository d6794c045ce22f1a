// What happens when the main window closes.

#include "main_window.h"

#include "platform/cTray.h"

using unit::MainWindow;

class Closing : public MainWindow {
protected:
    /// One key in the box of the standard path.
    void edit(const std::string& path) {
        event([this] { window().txtOpenPath.keyPress(U'x'); });
        event([this, path] { window().txtOpenPath.typed(path); });
    }

    void answerWith(int button) {
        computer().answer = [button](const fake::Message&) { return button; };
    }
};

TEST_F(Closing, AsksNothingWithoutAnEdit) {
    start();
    close();
    EXPECT_TRUE(computer().messages.empty());
    EXPECT_TRUE(ended());
    EXPECT_EQ(status(), 0);
    EXPECT_FALSE(toolkit::ending().atOnce);
    EXPECT_EQ(computer().windows.back(), "close frmMain");
}

TEST_F(Closing, AKeyInThePathBoxIsAnEdit) {
    start();
    edit("x");
    EXPECT_TRUE(window().UnsavedChanges);
    EXPECT_TRUE(window().cmdSaveOnStick.enabled());
}

TEST_F(Closing, APathShownByTheProgramIsNoEdit) {
    start();
    event([this] { window().txtOpenPath.setText("x"); });
    EXPECT_FALSE(window().UnsavedChanges);
}

TEST_F(Closing, AsksOnceAfterAnEdit) {
    start();
    edit("Firmware");
    close();
    ASSERT_EQ(computer().messages.size(), 1U);
    EXPECT_EQ(computer().messages[0].text, "Sie haben Informationen abgeändert.\r\nWollen Sie speichern?");
    EXPECT_EQ(computer().messages[0].style, 68);
    EXPECT_EQ(computer().messages[0].title, unit::title);
}

TEST_F(Closing, YesSavesThePathAndCloses) {
    start();
    edit("Firmware");
    answerWith(6);
    close();
    EXPECT_EQ(computer().files["D:\\USB.ini"].contents, "[Open]\r\nDir=Firmware\r\n");
    EXPECT_TRUE(ended());
    EXPECT_EQ(status(), 0);
}

TEST_F(Closing, NoSavesNothingAndCloses) {
    start();
    edit("Firmware");
    answerWith(7);
    close();
    EXPECT_EQ(computer().files.count("D:\\USB.ini"), 0U);
    EXPECT_TRUE(ended());
    EXPECT_EQ(status(), 0);
}

TEST_F(Closing, AsksNothingWhenTheEditHasBeenSaved) {
    start();
    edit("Firmware");
    click(window().cmdSaveOnStick);
    close();
    EXPECT_TRUE(computer().messages.empty());
}

TEST_F(Closing, GoesInOrder) {
    start();
    edit("Firmware");
    computer().journal.clear();
    close();
    EXPECT_EQ(computer().journal, (std::vector<std::string>{"message " + unit::title, "write D:\\USB.ini",
                                                            "write /opt/tool\\Settings.ini"}));
    EXPECT_EQ(computer().routedWindows, std::vector<std::intptr_t>(2, fake::windowHandle));
    EXPECT_NE(computer().procedure, nullptr);
    computer().procedure(fake::windowHandle, platform::deviceChangeMessage, platform::deviceArrival, 0);
    EXPECT_EQ(computer().defaultMessages, std::vector<std::uint32_t>{platform::deviceChangeMessage})
        << "the window's own procedure is back";
}

TEST_F(Closing, TheSettingsAreSavedBeforeTheWindowsOwnProcedureIsBack) {
    start();
    const std::size_t hooked = computer().routedWindows.size();
    std::size_t whenSaved = 0;
    computer().fails = [&](const std::string& operation) {
        if (operation.ends_with("Settings.ini")) whenSaved = computer().routedWindows.size();
        return false;
    };
    close();
    EXPECT_EQ(whenSaved, hooked);
    EXPECT_EQ(computer().routedWindows.size(), hooked + 1);
}

TEST_F(Closing, TheRegistryGoesBeforeTheTrayIconAndTheDrivesAfterIt) {
    start();
    bool registry = true;
    bool drives = false;
    bool mainWindow = false;
    computer().onTray = [&](platform::NotifyIcon message) {
        if (message != platform::NotifyIcon::Delete) return;
        registry = program.Registry != nullptr;
        drives = program.Drive != nullptr;
        mainWindow = program.MainWindow != nullptr;
    };
    close();
    EXPECT_FALSE(registry);
    EXPECT_TRUE(drives);
    EXPECT_TRUE(mainWindow);
}

TEST_F(Closing, ReleasesTheProgramWideObjectsAndTheTrayIcon) {
    start();
    close();
    EXPECT_EQ(program.Registry, nullptr);
    EXPECT_EQ(program.Tray, nullptr);
    EXPECT_EQ(program.Drive, nullptr);
    EXPECT_EQ(program.MainWindow, nullptr);
    ASSERT_FALSE(computer().trayCalls.empty());
    EXPECT_EQ(computer().trayCalls.back().message, platform::NotifyIcon::Delete);
}

TEST_F(Closing, ASecondRequestMeanwhileChangesNothing) {
    start();
    edit("Firmware");
    computer().answer = [this](const fake::Message&) {
        close();
        return 7;
    };
    close();
    EXPECT_EQ(computer().messages.size(), 1U);
    EXPECT_EQ(computer().quits, 1);
    EXPECT_EQ(status(), 0);
}

TEST_F(Closing, WithoutAStickThePathGoesNowhereAndTheWindowClosesAllTheSame) {
    pullOut("D:\\");
    start();
    edit("Firmware");
    close();
    EXPECT_EQ(computer().files.count("D:\\USB.ini"), 0U);
    EXPECT_EQ(status(), 0);
}

TEST_F(Closing, APathThatCannotBeSavedIsNoError) {
    start();
    edit("Firmware");
    computer().writeResults["D:\\USB.ini"] = platform::FileResult::DiskFull;
    close();
    EXPECT_EQ(status(), 0);
}
