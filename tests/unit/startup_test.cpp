// What the main window is when it has just come up.

#include "main_window.h"

#include "base/lines.h"
#include "platform/cTray.h"
#include "window/title.h"

using unit::MainWindow;

class Startup : public MainWindow {};

TEST_F(Startup, TheTitleEndsInTheVersion) {
    start();
    EXPECT_EQ(window().caption(), unit::title);
    EXPECT_EQ(base::CRLF, "\r\n");
    EXPECT_EQ(window::programVersion, base::programVersion);
}

TEST_F(Startup, TheProgramWideObjectsAreThere) {
    start();
    EXPECT_NE(program.Tray, nullptr);
    EXPECT_NE(program.Drive, nullptr);
    EXPECT_NE(program.Registry, nullptr);
    EXPECT_EQ(program.MainWindow, &window());
    EXPECT_FALSE(program.OpenOnArrival);
}

TEST_F(Startup, TheWindowHasItsIconAndIsShown) {
    start();
    EXPECT_EQ(fake::nameOf(window().icon()), "icon 103");
    EXPECT_EQ(computer().windows, std::vector<std::string>{"open frmMain"});
}

TEST_F(Startup, CaptionsOfTheChannelLists) {
    start();
    const std::array<std::string, 6> expected = {"Auswahl nicht verfügbar",
                                                 "Österreich - Programmierung",
                                                 "Deutschland - Programmierung",
                                                 "Italy - List",
                                                 "France - List",
                                                 "Spain - List"};
    EXPECT_EQ(window().SettingsCaptions, expected);
}

TEST_F(Startup, ChannelOrders) {
    start();
    const auto& order = window().ChannelOrder;
    EXPECT_EQ(order[0], "1. ORF 1    6. ZDF\r\n2. ORF 2    7. BR 3\r\n3. ATV+     8. SAT 1\r\n"
                        "4. TW 1     9. PRO 7\r\n5. ARD     10. ...");
    EXPECT_EQ(order[1], "1. ARD      6. SAT 1\r\n2. ZDF      7. PRO 7\r\n3. 3 Sat    8. Kabel 1\r\n"
                        "4. RTL      9. VOX\r\n5. RTL 2   10. ...");
    EXPECT_EQ(order[2], "1. RAI 1    6. Italia1\r\n2. RAI 2    7. LA 7\r\n3. RAI 3    8. TSI 1\r\n"
                        "4. Rete 4   9. TSI 2\r\n5. Canale5 10. ...");
    EXPECT_EQ(order[3], "1. FR1      6. ...\r\n2. FR2      7. ...\r\n3. FR3      8. ...\r\n"
                        "4. ...      9. ...\r\n5. ...     10. ...");
    EXPECT_EQ(order[4], "1. TVE1     6. ...\r\n2. TVE2     7. ...\r\n3. TVE3     8. ...\r\n"
                        "4. ...      9. ...\r\n5. ...     10. ...");
}

TEST_F(Startup, NothingIsSelectedAndNothingIsUnsaved) {
    start();
    EXPECT_EQ(window().SelectedFirmware, -1);
    EXPECT_EQ(window().SelectedSettings, -1);
    EXPECT_FALSE(window().UnsavedChanges);
}

TEST_F(Startup, TheUnitBoxHoldsBothUnitsAndTheFirstIsSelected) {
    start();
    const auto& items = window().cmbSize.items();
    ASSERT_EQ(items.size(), 2U);
    EXPECT_EQ(items[0].text, "MB");
    EXPECT_EQ(items[0].data, 2);
    EXPECT_EQ(items[1].text, "GB");
    EXPECT_EQ(items[1].data, 3);
    EXPECT_EQ(window().cmbSize.listIndex(), 0);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(window().lblSize[i].caption(), "MB");
}

TEST_F(Startup, AStickThatIsPluggedInIsShownFromTheStart) {
    start();
    EXPECT_EQ(window().lblLW.caption(), "D:\\");
    EXPECT_EQ(window().StatusBar1.panel(1).text(), "USB Stick");
    EXPECT_EQ(window().lblHDSize.caption(), "4096,00");
}

TEST_F(Startup, WithoutAStickTheScanShowsSo) {
    pullOut("D:\\");
    start();
    EXPECT_EQ(window().lblLW.caption(), "");
    EXPECT_EQ(window().StatusBar1.panel(1).text(), "No Stick");
    EXPECT_EQ(window().lblHDSize.caption(), "");
}

TEST_F(Startup, SearchingForUpdatesIsShownWithAndWithoutAStick) {
    for (const bool stick : {true, false}) {
        SCOPED_TRACE(stick);
        if (!stick) pullOut("D:\\");
        start();
        EXPECT_EQ(window().cmdChoose.caption(), "Suche Updates...");
        EXPECT_FALSE(window().cmdChoose.enabled());
        EXPECT_EQ(window().StatusBar1.panel(2).text(), "Suche nach Updates...");
        EXPECT_EQ(window().StatusBar1.panel(2).toolTip(), "Updates werden gesucht.");
        EXPECT_TRUE(window().StatusBar1.panel(2).enabled());
        program.Tray.reset();
    }
}

TEST_F(Startup, NothingIsFetchedBeforeTheTimer) {
    start();
    EXPECT_TRUE(computer().fetched.empty());
    EXPECT_TRUE(window().Timer1.enabled());
    EXPECT_EQ(window().Timer1.interval(), std::chrono::milliseconds(4000));
}

TEST_F(Startup, TheUpdateCheckWaitsForTheChoiceOfTheStick) {
    plugIn("E:\\");
    computer().onModal = [this](toolkit::Form& dialog) {
        program.MainWindow->Timer1.tick();
        EXPECT_TRUE(computer().fetched.empty());
        dialog.closeRequested();
    };
    start();
    EXPECT_EQ(window().cmdChoose.caption(), "Suche Updates...");
    tick();
    EXPECT_EQ(window().cmdChoose.caption(), "Starte Update");
    EXPECT_EQ(window().StatusBar1.panel(2).text(), "Updates geladen.");
}

TEST_F(Startup, TheUpdateCheckRunsOnce) {
    start();
    tick();
    EXPECT_FALSE(window().Timer1.enabled());
    const auto fetched = computer().fetched.size();
    EXPECT_EQ(fetched, 3U);
    tick();
    EXPECT_EQ(computer().fetched.size(), fetched);
}

TEST_F(Startup, TheTimerIsOffAfterTheUpdateCheck) {
    start();
    bool running = false;
    computer().fails = [&](const std::string& operation) {
        if (operation.starts_with("fetch ")) running = window().Timer1.enabled();
        return false;
    };
    tick();
    EXPECT_TRUE(running);
    EXPECT_FALSE(window().Timer1.enabled());
}

TEST_F(Startup, TheUpdateCheckRunsOnceThoughItsMessageStandsLonger) {
    computer().web.clear();
    start();
    computer().answer = [this](const fake::Message&) {
        tick();
        return 1;
    };
    tick();
    EXPECT_EQ(computer().messages.size(), 1U);
    EXPECT_EQ(computer().fetched.size(), 1U);
}

TEST_F(Startup, TheWindowIsRoutedThroughTheProgramsProcedure) {
    start();
    EXPECT_EQ(computer().routedWindows, std::vector<std::intptr_t>{fake::windowHandle});
    EXPECT_NE(computer().procedure, nullptr);
}

TEST_F(Startup, TheSearchIsShownOnceDevicesAreListenedTo) {
    std::string state;
    std::string button;
    computer().onProcedure = [&] {
        state = program.MainWindow->StatusBar1.panel(2).text();
        button = program.MainWindow->cmdChoose.caption();
    };
    start();
    EXPECT_EQ(state, "");
    EXPECT_EQ(button, "Starte Update");
}

TEST_F(Startup, AMissingPictureIsTheEnd) {
    computer().files.erase("/opt/tool\\file.bmp");
    start();
    ASSERT_EQ(computer().messages.size(), 1U);
    EXPECT_EQ(computer().messages[0].text,
              unit::errorReport(base::ErrorNumber::FileNotFound, "/opt/tool\\file.bmp"));
    EXPECT_EQ(status(), 1);
}

TEST_F(Startup, TheProgramFolderMayEndInABackslash) {
    computer().folder = "/opt/tool\\";
    start();
    EXPECT_FALSE(ended());
    EXPECT_EQ(fake::nameOf(window().StatusBar1.panel(1).picture()), "/opt/tool\\file.bmp");
}

TEST_F(Startup, EveryControlCanBeFoundByItsName) {
    start();
    for (const char* name :
         {"Label15",        "Label16",       "Label17",        "Label18",         "Label19",
          "Label21",        "Firm_Option_0", "Firm_Option_8",  "Sett_Option_0",   "Sett_Option_4",
          "Image1",         "lbl_firmstand", "lbl_settstand",  "lbl_reihenfolge", "lbl_Aenderung",
          "frm_News",       "lbl_news_0",    "lbl_news_3",     "cmdChoose",       "StatusBar1",
          "StatusBar1_1",   "StatusBar1_2",  "Timer1",         "Frame2",          "lblLW",
          "txtDT_Cap",      "Command1",      "txtFAT",         "cmbSize",         "lblHDSize",
          "lblHDFree",      "lblHDUsed",     "lblHDFreeColor", "lblHDUsedColor",  "lblSize_0",
          "lblSize_2",      "Picture1",      "cmdSearch",      "cmdOpen",         "txtOpenPath",
          "cmdSaveOnStick", "chkAuto",       "Frame4",         "cmdtest",         "mnuPopup_0",
          "mnuPopup_3"})
        EXPECT_NE(window().find(name), nullptr) << name;
}

TEST_F(Startup, TheMainWindowOwnsTheAssistantAndTheDriveDialog) {
    plugIn("E:\\");
    start();
    click(window().cmdtest);
    EXPECT_EQ(computer().owners["frmMain"], "");
    EXPECT_EQ(computer().owners["Form1"], "frmMain");
    EXPECT_EQ(computer().owners["frmAuswahl"], "frmMain");
}

class PopupMenu : public MainWindow {};

TEST_F(PopupMenu, HasItsFourItems) {
    start();
    const char* const captions[] = {"Wiederherstellen", "USB Stick öffnen", "-", "Beenden"};
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(window().mnuPopup[i].caption(), captions[i]);
}

TEST_F(PopupMenu, RestoreBringsTheWindowBack) {
    start();
    window().setVisible(false);
    click(window().mnuPopup[0]);
    EXPECT_TRUE(window().visible());
    EXPECT_EQ(computer().windows.back(), "restore frmMain");
}

TEST_F(PopupMenu, OpenShowsTheOnlyStick) {
    start();
    click(window().mnuPopup[1]);
    ASSERT_EQ(computer().shellCalls.size(), 1U);
    EXPECT_EQ(computer().shellCalls[0].file, "D:\\");
}

TEST_F(PopupMenu, OpenDoesNothingWithoutAStickOrWithSeveral) {
    start();
    plugIn("E:\\");
    click(window().cmdSearch);
    click(window().mnuPopup[1]);
    pullOut("D:\\");
    pullOut("E:\\");
    click(window().cmdSearch);
    click(window().mnuPopup[1]);
    EXPECT_TRUE(computer().shellCalls.empty());
}

TEST_F(PopupMenu, TheSeparatorAndBeendenDoNothing) {
    start();
    computer().journal.clear();
    click(window().mnuPopup[2]);
    click(window().mnuPopup[3]);
    EXPECT_TRUE(computer().journal.empty());
    EXPECT_FALSE(ended());
    EXPECT_TRUE(window().loaded());
}
