// What the main window shows of the stick, and what its buttons do with it.

#include "main_window.h"

#include "drive/stick_actions.h"
#include "platform/basINI.h"
#include "platform/cTray.h"
#include "platform/profile.h"

using unit::MainWindow;

class StickDisplay : public MainWindow {
protected:
    toolkit::StatusPanel& panel() { return window().StatusBar1.panel(1); }
    std::string trayPicture() { return fake::nameOf(program.Tray->TrayIcon_Icon()); }
    std::string path() { return window().txtOpenPath.text(); }
    void search() { click(window().cmdSearch); }
};

TEST_F(StickDisplay, ShowsAStick) {
    startOnline();
    window().cmdChoose.setEnabled(false);
    window().cmdChoose.setCaption("");
    search();
    EXPECT_EQ(window().lblLW.caption(), "D:\\");
    EXPECT_TRUE(window().cmdChoose.enabled());
    EXPECT_EQ(window().cmdChoose.caption(), "Starte Update");
    EXPECT_EQ(panel().text(), "USB Stick");
    EXPECT_EQ(panel().toolTip(), "USB-Stick gefunden.");
    EXPECT_TRUE(panel().enabled());
    EXPECT_EQ(fake::nameOf(panel().picture()), "/opt/tool\\file.bmp");
    EXPECT_EQ(window().txtDT_Cap.text(), "STICK");
    EXPECT_EQ(window().txtFAT.text(), "FAT32");
    EXPECT_EQ(window().lblHDSize.caption(), "4096,00");
    EXPECT_EQ(trayPicture(), "icon 104");
    ASSERT_FALSE(computer().trayCalls.empty());
    EXPECT_EQ(computer().trayCalls.back().message, platform::NotifyIcon::Modify);
    EXPECT_EQ(computer().trayCalls.back().record[20], 104);
}

TEST_F(StickDisplay, ShowsThatThereIsNoStickAndKeepsTheLetter) {
    putFile("D:\\USB.ini", "[Open]\r\nDir=a\r\n");
    startOnline();
    ASSERT_EQ(path(), "a");
    const auto trayCalls = computer().trayCalls.size();
    pullOut("D:\\");
    search();
    EXPECT_EQ(path(), "");
    EXPECT_EQ(drive().mp_StandardPfad(), "");
    EXPECT_EQ(window().txtFAT.text(), "");
    EXPECT_EQ(window().txtDT_Cap.text(), "");
    EXPECT_EQ(window().lblHDSize.caption(), "");
    EXPECT_EQ(window().lblHDUsed.caption(), "");
    EXPECT_EQ(window().lblHDFree.caption(), "");
    EXPECT_TRUE(window().Picture1.rectangles().empty());
    EXPECT_TRUE(window().Picture1.texts().empty());
    EXPECT_FALSE(window().cmdChoose.enabled());
    EXPECT_EQ(window().cmdChoose.caption(), "USB Stick einstecken");
    EXPECT_EQ(panel().text(), "No Stick");
    EXPECT_FALSE(panel().enabled());
    EXPECT_EQ(panel().toolTip(), "Kein USB-Stick gefunden. Schließen Sie den USB-Stick am PC an.");
    EXPECT_EQ(fake::nameOf(panel().picture()), "/opt/tool\\nofile.bmp");
    EXPECT_EQ(window().lblLW.caption(), "D:\\");
    EXPECT_EQ(trayPicture(), "icon 103");
    EXPECT_EQ(computer().trayCalls.size(), trayCalls);
}

TEST_F(StickDisplay, ShowsTheFileSystemOfTheStickWhoseLabelItShows) {
    start();
    computer().drives["D:\\"].label = "NEW";
    computer().drives["D:\\"].fileSystem = "exFAT";
    search();
    EXPECT_EQ(window().txtDT_Cap.text(), "NEW");
    EXPECT_EQ(window().txtFAT.text(), "exFAT");
}

TEST_F(StickDisplay, TellsWhatKeepsSticksFromBeingSeen) {
    start();
    pullOut("D:\\");
    computer().missingService = "Der Dienst fehlt.";
    search();
    EXPECT_EQ(panel().toolTip(),
              "Kein USB-Stick gefunden. Schließen Sie den USB-Stick am PC an.\nDer Dienst fehlt.");
    EXPECT_EQ(panel().text(), "No Stick");
    computer().missingService.clear();
    search();
    EXPECT_EQ(panel().toolTip(), "Kein USB-Stick gefunden. Schließen Sie den USB-Stick am PC an.");
}

TEST_F(StickDisplay, AStickEnablesTheButtonWhateverTheOnlineState) {
    computer().web.clear();
    startOnline();
    EXPECT_FALSE(window().cmdChoose.enabled());
    search();
    EXPECT_TRUE(window().cmdChoose.enabled());
    EXPECT_EQ(window().cmdChoose.caption(), "Starte Update");
}

TEST_F(StickDisplay, AMissingPictureIsTheEnd) {
    start();
    computer().files.erase("/opt/tool\\nofile.bmp");
    pullOut("D:\\");
    search();
    ASSERT_EQ(computer().messages.size(), 1U);
    EXPECT_EQ(computer().messages[0].text,
              unit::errorReport(base::ErrorNumber::FileNotFound, "/opt/tool\\nofile.bmp"));
}

class StandardPath : public StickDisplay {};

TEST_F(StandardPath, ComesFromTheStickWithoutItsLeadingBackslash) {
    putFile("D:\\USB.ini", "[Open]\r\nDir=\\Firmware\r\n");
    start();
    EXPECT_EQ(path(), "Firmware");
    EXPECT_EQ(drive().mp_StandardPfad(), "Firmware");
}

TEST_F(StandardPath, LosesOneBackslashOnly) {
    putFile("D:\\USB.ini", "[Open]\r\nDir=\\\\a\r\n");
    start();
    EXPECT_EQ(path(), "\\a");
}

TEST_F(StandardPath, IsTheFirstValueWhateverItsName) {
    putFile("D:\\USB.ini", "[Other]\r\nx=first\r\n[Open]\r\nDir=second\r\n");
    start();
    EXPECT_EQ(path(), "first");
}

TEST_F(StandardPath, OfAnEmptyProfileIsEmpty) {
    start();
    window().txtOpenPath.setText("old");
    putFile("D:\\USB.ini", "");
    search();
    EXPECT_EQ(path(), "");
}

TEST_F(StandardPath, OfAnEmptyProfileIsEmptyAlsoAfterAFilledOne) {
    putFile("D:\\USB.ini", "[Open]\r\nDir=a\r\n");
    start();
    ASSERT_EQ(path(), "a");
    putFile("D:\\USB.ini", "");
    search();
    EXPECT_EQ(path(), "");
    EXPECT_EQ(drive().mp_StandardPfad(), "");
}

TEST_F(StandardPath, OfTheLastStickStaysWhenTheNextHasNone) {
    putFile("D:\\USB.ini", "[Open]\r\nDir=a\r\n");
    start();
    pullOut("D:\\");
    plugIn("E:\\");
    search();
    EXPECT_EQ(window().lblLW.caption(), "E:\\");
    EXPECT_EQ(path(), "a");
    EXPECT_EQ(drive().mp_StandardPfad(), "a");
}

TEST_F(StandardPath, OfAReadOnlyProfileIsNotTaken) {
    start();
    computer().files["D:\\USB.ini"] = {"[Open]\r\nDir=x\r\n", platform::FileArchive | platform::FileReadOnly};
    window().txtOpenPath.setText("old");
    search();
    EXPECT_EQ(path(), "old");
}

TEST_F(StandardPath, OfAProfileThatIsTooLargeIsNotTaken) {
    putFile("D:\\USB.ini", "[Open]\r\nDir=first\r\n");
    start();
    window().txtOpenPath.setText("old");
    drive().mp_StandardPfad("old");
    const std::string second = "[Open]\r\nDir=second\r\n;";
    putFile("D:\\USB.ini", second + std::string(platform::largestProfile + 1 - second.size(), 'x'));
    search();
    EXPECT_EQ(path(), "old");
    EXPECT_EQ(drive().mp_StandardPfad(), "old");
    EXPECT_EQ(drive().p_USBInfosCount(), 0);
    putFile("D:\\USB.ini", second + std::string(platform::largestProfile - second.size(), 'x'));
    search();
    EXPECT_EQ(path(), "second");
}

TEST_F(StandardPath, OfAStickChosenInTheDialogIsNotReadInThisPass) {
    start();
    basINI::IniReset();
    plugIn("E:\\");
    putFile("E:\\USB.ini", "[Open]\r\nDir=e\r\n");
    computer().onModal = [this](toolkit::Form&) { drive().ChooseUSB_Info("E:\\"); };
    search();
    EXPECT_EQ(window().lblLW.caption(), "E:\\");
    EXPECT_EQ(path(), "") << "no pass before has read one";
}

TEST_F(StandardPath, OfAStickChosenInTheDialogIsThatOfAnEarlierPass) {
    start();
    putFile("D:\\USB.ini", "[Open]\r\nDir=d\r\n");
    search();
    plugIn("E:\\");
    putFile("E:\\USB.ini", "[Open]\r\nDir=e\r\n");
    computer().onModal = [this](toolkit::Form&) { drive().ChooseUSB_Info("E:\\"); };
    search();
    EXPECT_EQ(path(), "d");
}

TEST_F(StandardPath, IsTheSticksAlthoughTheSettingsWereReadBefore) {
    putFile("/opt/tool\\Settings.ini", "[USB Tool]\r\nchkAuto=1\r\ncmbSize=0\r\n");
    start();
    putFile("D:\\USB.ini", "[Open]\r\nDir=d\r\n");
    search();
    EXPECT_EQ(path(), "d");
}

TEST_F(StandardPath, IsNeverAValueOfTheSettingsFile) {
    putFile("/opt/tool\\Settings.ini", "[USB Tool]\r\nchkAuto=1\r\ncmbSize=0\r\n");
    start();
    plugIn("E:\\");
    putFile("E:\\USB.ini", "[Open]\r\nDir=e\r\n");
    computer().onModal = [this](toolkit::Form&) { drive().ChooseUSB_Info("E:\\"); };
    search();
    EXPECT_EQ(window().chkAuto.value(), 1);
    EXPECT_EQ(path(), "");
}

class SavePath : public StickDisplay {};

TEST_F(SavePath, CreatesTheProfile) {
    start();
    window().txtOpenPath.setText("Filme\\Neu");
    window().cmdSaveOnStick.setEnabled(true);
    window().UnsavedChanges = true;
    click(window().cmdSaveOnStick);
    EXPECT_EQ(computer().files["D:\\USB.ini"].contents, "[Open]\r\nDir=Filme\\Neu\r\n");
    EXPECT_FALSE(window().cmdSaveOnStick.enabled());
    EXPECT_FALSE(window().UnsavedChanges);
}

TEST_F(SavePath, IsWhereTheStickIsOpenedFromNowOn) {
    start();
    for (const char* path : {"Musik", "\\Musik"}) {
        window().txtOpenPath.setText(path);
        window().cmdSaveOnStick.setEnabled(true);
        click(window().cmdSaveOnStick);
        EXPECT_EQ(drive().mp_StandardPfad(), "Musik") << path;
        drive().mp_StandardPfad("");
    }
}

TEST_F(SavePath, ThatFailsLeavesTheChangeMarked) {
    start();
    drive().mp_StandardPfad("Alt");
    const std::function<void()> causes[] = {
        [] { computer().writeResults["D:\\USB.ini"] = platform::FileResult::PermissionDenied; },
        [] {
            computer().writeResults.clear();
            computer().drives["D:\\"].medium = "another";
        },
        [] { pullOut("D:\\"); },
        [this] { drive().RemoveUSB_Info(); },
    };
    for (const auto& cause : causes) {
        cause();
        drive().mp_StandardPfad("Alt");
        window().txtOpenPath.setText("Musik");
        window().cmdSaveOnStick.setEnabled(true);
        window().UnsavedChanges = true;
        click(window().cmdSaveOnStick);
        EXPECT_TRUE(window().cmdSaveOnStick.enabled());
        EXPECT_TRUE(window().UnsavedChanges);
        EXPECT_EQ(drive().mp_StandardPfad(), "Alt");
        EXPECT_EQ(computer().files.count("D:\\USB.ini"), 0U);
        EXPECT_TRUE(computer().messages.empty());
    }
}

TEST_F(SavePath, ChangesNothingElseOfTheProfile) {
    putFile("D:\\USB.ini", "[A]\r\nx=1\r\n[Open]\r\nDir=a\r\ny=2\r\n");
    start();
    window().txtOpenPath.setText("b");
    event([this] { drive::SavePath(drive()); });
    EXPECT_EQ(computer().files["D:\\USB.ini"].contents, "[A]\r\nx=1\r\n[Open]\r\nDir=b\r\ny=2\r\n");
}

TEST_F(SavePath, AnEmptyPathIsStoredAsOneBlank) {
    start();
    event([this] { drive::SavePath(drive()); });
    EXPECT_EQ(computer().files["D:\\USB.ini"].contents, "[Open]\r\nDir= \r\n");
}

class OpenStick : public StickDisplay {
protected:
    void folder(const std::string& path) { computer().files[path] = {"", platform::FileDirectory}; }
};

TEST_F(OpenStick, OpensTheStandardFolder) {
    putFile("D:\\USB.ini", "[Open]\r\nDir=Filme\r\n");
    folder("D:\\Filme");
    start();
    click(window().cmdOpen);
    ASSERT_EQ(computer().shellCalls.size(), 1U);
    const fake::ShellCall& call = computer().shellCalls[0];
    EXPECT_EQ(call.owner, fake::windowHandle);
    EXPECT_EQ(call.verb, "open");
    EXPECT_EQ(call.file, "D:\\Filme");
    EXPECT_EQ(call.parameters, "");
    EXPECT_EQ(call.directory, "");
    EXPECT_EQ(call.showCommand, 1);
}

TEST_F(OpenStick, WithoutAStandardPathOpensTheRoot) {
    start();
    click(window().cmdOpen);
    ASSERT_EQ(computer().shellCalls.size(), 1U);
    EXPECT_EQ(computer().shellCalls[0].file, "D:\\");
}

TEST_F(OpenStick, AFolderThatDoesNotExistIsNotOpened) {
    putFile("D:\\USB.ini", "[Open]\r\nDir=Filme\r\n");
    start();
    click(window().cmdOpen);
    EXPECT_TRUE(computer().shellCalls.empty());
    EXPECT_TRUE(computer().messages.empty());
}

TEST_F(OpenStick, AFileIsNotOpened) {
    for (const char* name : {"Fotos.exe", "Fotos.desktop", "liste.txt"}) {
        putFile("D:\\USB.ini", std::string("[Open]\r\nDir=") + name + "\r\n");
        putFile(std::string("D:\\") + name, "MZ");
        start();
        click(window().cmdOpen);
        EXPECT_TRUE(computer().shellCalls.empty()) << name;
        EXPECT_TRUE(computer().messages.empty());
    }
}

TEST_F(OpenStick, AFolderMayBeCalledLikeAProgram) {
    putFile("D:\\USB.ini", "[Open]\r\nDir=Fotos.exe\r\n");
    folder("D:\\Fotos.exe");
    start();
    click(window().cmdOpen);
    ASSERT_EQ(computer().shellCalls.size(), 1U);
    EXPECT_EQ(computer().shellCalls[0].file, "D:\\Fotos.exe");
}

TEST_F(OpenStick, DoesNothingUntilAScanFindsExactlyOne) {
    start();
    plugIn("E:\\");
    search();
    click(window().cmdOpen);
    EXPECT_TRUE(computer().shellCalls.empty()) << "one of several has been chosen";
    pullOut("E:\\");
    search();
    click(window().cmdOpen);
    EXPECT_EQ(computer().shellCalls.size(), 1U);
}

TEST_F(OpenStick, DoesNothingWithoutAStick) {
    pullOut("D:\\");
    start();
    click(window().cmdOpen);
    EXPECT_TRUE(computer().shellCalls.empty());
}
