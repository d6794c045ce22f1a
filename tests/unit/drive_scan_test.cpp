// Which drives are sticks, and which of them is the stick.

#include "main_window.h"

using unit::GB;
using unit::MainWindow;

class DriveScan : public MainWindow {
protected:
    DriveScan() {
        start();
        computer().windows.clear();
    }

    void drives(const std::vector<std::pair<std::string, std::uint32_t>>& all) {
        computer().drives.clear();
        for (const auto& [root, type] : all)
            computer().drives[root] = {type, 4 * GB, 3 * GB, "STICK", "FAT32"};
    }

    std::vector<std::string> found() {
        drive().mp_GetDriveTyps();
        std::vector<std::string> roots;
        for (std::int32_t i = 0; i < drive().p_GetDL_Count(); ++i)
            roots.push_back(drive().p_GetDriveLetters(std::to_string(i)));
        return roots;
    }

    static constexpr std::uint32_t stick = platform::DriveRemovable;
    static constexpr std::uint32_t fixed = platform::DriveFixed;
};

using Roots = std::vector<std::string>;

TEST_F(DriveScan, TheLastRootIsNeverExamined) {
    drives({{"C:\\", fixed}, {"D:\\", stick}, {"E:\\", stick}});
    EXPECT_EQ(found(), Roots{"D:\\"});
    EXPECT_TRUE(computer().windows.empty()) << "one stick: no dialog";
    drives({{"C:\\", fixed}, {"D:\\", stick}});
    EXPECT_EQ(found(), Roots{});
}

TEST_F(DriveScan, AnOnlyRootIsExamined) {
    drives({{"D:\\", stick}});
    EXPECT_EQ(found(), Roots{"D:\\"});
}

TEST_F(DriveScan, NoDriveIsNoStick) {
    drives({});
    EXPECT_EQ(found(), Roots{});
    EXPECT_EQ(drive().p_GetUSBInfos("0"), "-2");
}

TEST_F(DriveScan, RemovableDrivesOnly) {
    drives({{"B:\\", platform::DriveCdRom},
            {"C:\\", fixed},
            {"D:\\", platform::DriveUnknown},
            {"E:\\", platform::DriveNoRootDir},
            {"F:\\", platform::DriveRemote},
            {"G:\\", stick},
            {"Z:\\", fixed}});
    EXPECT_EQ(found(), Roots{"G:\\"});
    EXPECT_EQ(drive().p_GetDT_Count(), 1);
    EXPECT_EQ(drive().p_GetDriveTyps("0"), "Wechseldatenträger");
}

TEST_F(DriveScan, DriveAIsNoStick) {
    drives({{"A:\\", stick}, {"Z:\\", fixed}});
    EXPECT_EQ(found(), Roots{});
    drives({{"a:\\", stick}, {"z:\\", fixed}});
    EXPECT_EQ(found(), Roots{});
    drives({{"A:\\", stick}, {"B:\\", stick}, {"Z:\\", fixed}});
    EXPECT_EQ(found(), Roots{"B:\\"});
}

TEST_F(DriveScan, LettersAreTakenInUpperCase) {
    drives({{"e:\\", stick}, {"z:\\", fixed}});
    computer().drives["E:\\"] = computer().drives["e:\\"];
    computer().drives["E:\\"].type = fixed;
    EXPECT_EQ(found(), Roots{"E:\\"});
}

TEST_F(DriveScan, ADriveWithoutAMediumIsSkipped) {
    drives({{"D:\\", stick}, {"E:\\", stick}, {"Z:\\", fixed}});
    computer().drives["D:\\"].total = 0;
    EXPECT_EQ(found(), Roots{"E:\\"});
}

TEST_F(DriveScan, FifteenRootsFitAndSixteenDoNot) {
    std::vector<std::pair<std::string, std::uint32_t>> all = {{"D:\\", stick}};
    for (char letter = 'E'; letter < 'E' + 14; ++letter)
        all.push_back({std::string(1, letter) + ":\\", fixed});
    ASSERT_EQ(all.size(), 15U);
    drives(all);
    EXPECT_EQ(found(), Roots{"D:\\"});
    all.push_back({"Z:\\", fixed});
    drives(all);
    EXPECT_EQ(found(), Roots{});
    EXPECT_EQ(drive().p_GetUSBInfos("0"), "-2");
}

TEST_F(DriveScan, EachScanBeginsWithEmptyLists) {
    found();
    found();
    EXPECT_EQ(drive().p_GetDL_Count(), 1);
    EXPECT_EQ(drive().p_GetDT_Count(), 1);
    pullOut("D:\\");
    EXPECT_EQ(found(), Roots{});
    EXPECT_EQ(drive().p_GetDT_Count(), 0);
    EXPECT_EQ(drive().p_USBInfosCount(), 1);
}

TEST_F(DriveScan, SeveralSticksOpenTheDialog) {
    plugIn("E:\\");
    EXPECT_EQ(found(), (Roots{"D:\\", "E:\\"}));
    EXPECT_EQ(computer().windows, std::vector<std::string>{"modal frmAuswahl"});
    EXPECT_EQ(drive().p_USBInfosCount(), 1);
    EXPECT_EQ(drive().p_GetUSBInfos("0"), "-1");
    EXPECT_EQ(drive().p_GetDT_Count(), 2);
}

TEST_F(DriveScan, TheStickChosenInTheDialogIsShown) {
    plugIn("E:\\");
    computer().onModal = [this](toolkit::Form&) { drive().ChooseUSB_Info("E:\\"); };
    click(window().cmdSearch);
    EXPECT_EQ(window().lblLW.caption(), "E:\\");
    EXPECT_EQ(drive().p_GetDriveLetters("0"), "E:\\");
    EXPECT_EQ(drive().p_GetDL_Count(), 1);
    EXPECT_EQ(drive().p_GetDT_Count(), 2) << "the choice does not shorten the list of types";
}

TEST_F(DriveScan, ACancelledDialogShowsTheFirstStick) {
    plugIn("E:\\");
    event([this] { window().lblLW.setCaption(""); });
    click(window().cmdSearch);
    EXPECT_EQ(window().lblLW.caption(), "D:\\");
    EXPECT_EQ(drive().p_GetDL_Count(), 1);
}

TEST_F(DriveScan, TheTrayIconFollowsTheNumberOfSticks) {
    drive().mp_GetDriveTyps();
    ASSERT_FALSE(computer().trayCalls.empty());
    const auto calls = computer().trayCalls.size();
    pullOut("D:\\");
    drive().mp_GetDriveTyps();
    EXPECT_EQ(computer().trayCalls.size(), calls) << "the scan sets the picture only";
}

class DriveLists : public DriveScan {};

TEST_F(DriveLists, LettersEndInABackslash) {
    drive().p_Del_DriveLetters();
    drive().p_GetDriveLetters_Let("F:");
    drive().p_GetDriveLetters_Let("G:\\");
    EXPECT_EQ(drive().p_GetDriveLetters("0"), "F:\\");
    EXPECT_EQ(drive().p_GetDriveLetters("1"), "G:\\");
    EXPECT_EQ(drive().p_GetDriveLetters("2"), "");
    EXPECT_EQ(drive().p_GetDL_Count(), 2);
}

class ChooseStick : public DriveScan {
protected:
    void letters(std::initializer_list<const char*> roots) {
        drive().p_Del_DriveLetters();
        for (const char* root : roots)
            drive().p_GetDriveLetters_Let(root);
        window().lblLW.setCaption("unchanged");
        window().StatusBar1.panel(1).setText("unchanged");
    }
    std::string shown() { return window().lblLW.caption(); }
    std::string panel() { return window().StatusBar1.panel(1).text(); }
};

TEST_F(ChooseStick, ARootIsShownWhenAtMostOneStickIsKnown) {
    letters({});
    drive().ChooseUSB_Info("D:");
    EXPECT_EQ(shown(), "D:\\");
    letters({"E:\\"});
    drive().ChooseUSB_Info("D:\\");
    EXPECT_EQ(shown(), "D:\\");
    EXPECT_EQ(drive().p_GetDL_Count(), 1);
}

TEST_F(ChooseStick, SeveralSticksWithTheirMarkerShowTheRoot) {
    letters({"D:\\", "E:\\"});
    drive().p_SetUSBInfos("-1");
    drive().ChooseUSB_Info("D:\\");
    EXPECT_EQ(shown(), "D:\\");
}

TEST_F(ChooseStick, WithoutARootTheNoStickMarkerShowsNoStick) {
    letters({});
    drive().p_SetUSBInfos("-2");
    drive().ChooseUSB_Info();
    EXPECT_EQ(shown(), "unchanged");
    EXPECT_EQ(panel(), "No Stick");
}

TEST_F(ChooseStick, OtherwiseNothingChanges) {
    letters({});
    drive().ChooseUSB_Info();
    EXPECT_EQ(panel(), "unchanged");
    letters({"D:\\", "E:\\"});
    drive().p_SetUSBInfos("some value");
    drive().ChooseUSB_Info("D:\\");
    EXPECT_EQ(shown(), "unchanged");
    EXPECT_EQ(panel(), "unchanged");
}

class UsbIni : public DriveScan {
protected:
    void scanWith(const std::string& lines) {
        putFile("D:\\USB.ini", lines);
        drive().mp_GetDriveTyps();
    }
    std::vector<std::string> infos() {
        std::vector<std::string> all;
        for (std::int32_t i = 0; i < drive().p_USBInfosCount(); ++i)
            all.push_back(drive().p_GetUSBInfos(std::to_string(i)));
        return all;
    }
};

TEST_F(UsbIni, OfAllPairsEverySecondIsCopied) {
    scanWith("[A]\r\na=1\r\nb=2\r\n[B]\r\nc=3\r\nd=4\r\n[C]\r\ne=5\r\n");
    EXPECT_EQ(infos(), (std::vector<std::string>{"a", "1", "c", "3", "e", "5"}));
}

TEST_F(UsbIni, WithoutOneThereAreNoInfos) {
    drive().mp_GetDriveTyps();
    EXPECT_TRUE(infos().empty());
}

TEST_F(UsbIni, AnEmptyOneHasNoInfos) {
    scanWith("");
    EXPECT_TRUE(infos().empty());
}

TEST_F(UsbIni, AMalformedOneIsTheEnd) {
    putFile("D:\\USB.ini", "[A]\r\nbroken\r\n");
    click(window().cmdSearch);
    ASSERT_EQ(computer().messages.size(), 1U);
    EXPECT_EQ(computer().messages[0].text,
              unit::errorReport(base::ErrorNumber::SubscriptOutOfRange, "D:\\USB.ini",
                                "In einer Zeile der Datei fehlt \"=\". Ergänzen Sie es, oder löschen Sie die "
                                "Datei, und starten Sie das Programm neu."));
}

TEST_F(UsbIni, IsNoLongerSearchedOnceThatTook256MB) {
    const std::string lines = "[A]\r\na=1\r\nx=\r\n[B]\r\nb=2\r\nx=\r\n[C]\r\nc=3\r\nx=\r\n";
    const std::vector<std::string> one = {"a", "1"};
    const std::vector<std::string> two = {"a", "1", "b", "2"};
    const std::vector<std::string> all = {"a", "1", "b", "2", "c", "3"};
    const auto infosOfLength = [&](std::uint64_t length) {
        computer().lengths["D:\\USB.ini"] = length;
        scanWith(lines);
        return infos();
    };
    EXPECT_EQ(infosOfLength(1), all);
    EXPECT_EQ(infosOfLength(128 * unit::MB), all) << "the second section ends at the limit itself";
    EXPECT_EQ(infosOfLength(128 * unit::MB + 1), two);
    EXPECT_EQ(infosOfLength(256 * unit::MB), two);
    EXPECT_EQ(infosOfLength(256 * unit::MB + 1), one) << "one section always";
}

TEST_F(UsbIni, AReadOnlyOneCountsAsAbsent) {
    computer().files["D:\\USB.ini"] = {"[Open]\r\nDir=x\r\n", platform::FileArchive | platform::FileReadOnly};
    drive().mp_GetDriveTyps();
    EXPECT_TRUE(infos().empty());
}

class PathExists : public DriveScan {};

TEST_F(PathExists, ForAFolderAndForAFileThatIsOnlyToBeArchived) {
    EXPECT_FALSE(drive().mp_PathExists("D:\\x"));
    for (std::uint32_t attributes = 0; attributes < 256; ++attributes) {
        computer().files["D:\\x"] = {"", attributes};
        EXPECT_EQ(drive().mp_PathExists("D:\\x"), attributes == 16 || attributes == 32) << attributes;
    }
}
