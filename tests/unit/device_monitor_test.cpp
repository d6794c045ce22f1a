// Devices that come and go.

#include "main_window.h"

#include "platform/basDeklare.h"
#include "platform/cTray.h"
#include "platform/device_events.h"

using unit::MainWindow;

class DeviceMonitor : public MainWindow {
protected:
    void startDetecting() {
        start();
        event([this] { window().chkAuto.setValue(1); });
        computer().driveScans = 0;
        computer().trayCalls.clear();
        computer().defaultMessages.clear();
        computer().windows.clear();
    }
    std::string panel() { return window().StatusBar1.panel(1).text(); }
    std::string trayPicture() { return fake::nameOf(program.Tray->TrayIcon_Icon()); }
    /// Icons of the calls that changed the tray icon.
    static std::vector<int> trayIcons() {
        std::vector<int> icons;
        for (const auto& call : computer().trayCalls)
            icons.push_back(call.record[20]);
        return icons;
    }
};

TEST(DeviceMessages, HaveTheNumbersOfWindows) {
    EXPECT_EQ(platform::destroyMessage, 2U);
    EXPECT_EQ(platform::deviceChangeMessage, 0x219U);
    EXPECT_EQ(platform::deviceArrival, 0x8000U);
    EXPECT_EQ(platform::deviceRemoveComplete, 0x8004U);
}

TEST_F(DeviceMonitor, AnArrivalScansAndShowsTheStick) {
    pullOut("D:\\");
    startDetecting();
    EXPECT_EQ(panel(), "No Stick");
    plugIn("D:\\");
    deviceArrives();
    EXPECT_EQ(computer().driveScans, 1);
    EXPECT_EQ(panel(), "USB Stick");
    EXPECT_EQ(window().lblLW.caption(), "D:\\");
    EXPECT_EQ(trayIcons(), (std::vector<int>{104, 104})) << "before the scan, and by showing the stick";
}

TEST_F(DeviceMonitor, AnArrivalOfAnythingElseScansToo) {
    pullOut("D:\\");
    startDetecting();
    deviceArrives();
    EXPECT_EQ(computer().driveScans, 1);
    EXPECT_EQ(panel(), "No Stick");
    EXPECT_EQ(trayIcons(), std::vector<int>{104}) << "the icon was changed before the scan found nothing";
    EXPECT_EQ(trayPicture(), "icon 103");
}

TEST_F(DeviceMonitor, ARemovalShowsNoStickWithoutAScan) {
    startDetecting();
    plugIn("E:\\");
    deviceGoes();
    EXPECT_EQ(computer().driveScans, 0);
    EXPECT_EQ(panel(), "No Stick") << "though two are there";
    EXPECT_EQ(trayIcons(), std::vector<int>{103});
    EXPECT_EQ(trayPicture(), "icon 103");
    EXPECT_FALSE(window().cmdChoose.enabled());
    EXPECT_EQ(window().lblLW.caption(), "D:\\");
}

TEST_F(DeviceMonitor, AfterARemovalTheNextArrivalOrSearchShowsTheStickAgain) {
    startDetecting();
    deviceGoes();
    click(window().cmdSearch);
    EXPECT_EQ(panel(), "USB Stick");
    deviceGoes();
    deviceArrives();
    EXPECT_EQ(panel(), "USB Stick");
}

TEST_F(DeviceMonitor, WithoutAutomaticDetectionNothingChanges) {
    start();
    computer().defaultMessages.clear();
    computer().driveScans = 0;
    deviceGoes();
    deviceArrives();
    EXPECT_EQ(computer().driveScans, 0);
    EXPECT_EQ(panel(), "USB Stick");
    EXPECT_EQ(computer().defaultMessages,
              (std::vector<std::uint32_t>{platform::deviceChangeMessage, platform::deviceChangeMessage}));
}

TEST_F(DeviceMonitor, EveryMessageIsPassedOnAndItsResultReturned) {
    startDetecting();
    EXPECT_EQ(message(platform::deviceChangeMessage, platform::deviceArrival), fake::defaultResult);
    EXPECT_EQ(message(platform::deviceChangeMessage, platform::deviceRemoveComplete), fake::defaultResult);
    EXPECT_EQ(message(15), fake::defaultResult);
    EXPECT_EQ(computer().defaultMessages,
              (std::vector<std::uint32_t>{platform::deviceChangeMessage, platform::deviceChangeMessage, 15}));
}

TEST_F(DeviceMonitor, OtherDeviceChangesAndOtherMessagesDoNothing) {
    startDetecting();
    for (const std::uintptr_t wParam : {0x7U, 0x8001U, 0x8002U, 0x8003U, 0x8005U})
        message(platform::deviceChangeMessage, wParam);
    message(0x218, 0x8000);
    message(0x21A, 0x8004);
    EXPECT_EQ(computer().driveScans, 0);
    EXPECT_EQ(panel(), "USB Stick");
    EXPECT_TRUE(computer().trayCalls.empty());
}

TEST_F(DeviceMonitor, TheLastArgumentIsNeverLookedAt) {
    startDetecting();
    message(platform::deviceChangeMessage, platform::deviceArrival, 1);
    EXPECT_EQ(computer().driveScans, 1);
}

TEST_F(DeviceMonitor, TheEndOfTheWindowRestoresItsProcedureFirst) {
    startDetecting();
    const auto own = computer().procedure;
    EXPECT_EQ(message(platform::destroyMessage), fake::defaultResult);
    EXPECT_NE(computer().procedure, own);
    EXPECT_EQ(computer().defaultMessages, std::vector<std::uint32_t>{2});
    message(platform::deviceChangeMessage, platform::deviceArrival);
    EXPECT_EQ(computer().driveScans, 0);
    basDeklare::UnhookWindow(fake::windowHandle);
    message(15);
    EXPECT_EQ(computer().defaultMessages.back(), 15U) << "a second time is harmless";
}

TEST_F(DeviceMonitor, AnArrivalMayOpenTheDialogAndTakesItsChoice) {
    startDetecting();
    plugIn("E:\\");
    computer().onModal = [this](toolkit::Form&) { drive().ChooseUSB_Info("E:\\"); };
    deviceArrives();
    EXPECT_EQ(computer().windows, std::vector<std::string>{"modal frmAuswahl"});
    EXPECT_EQ(window().lblLW.caption(), "E:\\");
}

TEST_F(DeviceMonitor, ARemovalWhileTheDialogIsOpenIsHandled) {
    startDetecting();
    plugIn("E:\\");
    std::string meanwhile;
    computer().onModal = [&](toolkit::Form&) {
        deviceGoes();
        meanwhile = panel();
    };
    deviceArrives();
    EXPECT_EQ(meanwhile, "No Stick");
    EXPECT_EQ(panel(), "USB Stick");
    EXPECT_FALSE(ended());
}

TEST_F(DeviceMonitor, TheStandardFolderOpensOnArrivalOnlyWhenTheFlagIsSet) {
    putFile("D:\\USB.ini", "[Open]\r\nDir=Filme\r\n");
    computer().files["D:\\Filme"] = {"", platform::FileDirectory};
    startDetecting();
    deviceArrives();
    EXPECT_TRUE(computer().shellCalls.empty());
    program.OpenOnArrival = true;
    deviceArrives();
    ASSERT_EQ(computer().shellCalls.size(), 1U);
    EXPECT_EQ(computer().shellCalls[0].file, "D:\\Filme");
}

TEST_F(DeviceMonitor, AStandardPathThatIsAFileIsNotOpenedOnArrival) {
    putFile("D:\\USB.ini", "[Open]\r\nDir=Filme.exe\r\n");
    putFile("D:\\Filme.exe", "MZ");
    startDetecting();
    program.OpenOnArrival = true;
    deviceArrives();
    EXPECT_TRUE(computer().shellCalls.empty());
}
