// The settings file and the controls it remembers.

#include "main_window.h"

using base::ErrorNumber;
using unit::errorReport;
using unit::MainWindow;

using namespace std::string_literals;

class Settings : public MainWindow {
protected:
    static constexpr const char* path = "/opt/tool\\Settings.ini";

    void startWith(const std::string& lines) {
        putFile(path, lines);
        start();
    }

    void
    expectReport(ErrorNumber number, const std::string& subject,
                 const std::string& advice = "Löschen Sie die Datei, oder setzen Sie den Wert auf 0, und "
                                             "starten Sie das Programm neu.") {
        ASSERT_EQ(computer().messages.size(), 1U);
        EXPECT_EQ(computer().messages[0].text, errorReport(number, subject, advice));
        EXPECT_EQ(status(), 1);
    }

    /// Plugs a second stick in behind the first and tells whether an arrival shows it.
    bool arrivalsCount() {
        const int scans = computer().driveScans;
        deviceArrives();
        return computer().driveScans > scans;
    }
};

TEST_F(Settings, AMissingFileLeavesTheDefaults) {
    start();
    EXPECT_EQ(window().chkAuto.value(), 0);
    EXPECT_EQ(window().cmbSize.listIndex(), 0);
    EXPECT_FALSE(arrivalsCount());
    EXPECT_TRUE(computer().messages.empty());
}

TEST_F(Settings, AMissingSectionLeavesTheDefaults) {
    startWith("[Other]\r\nchkAuto=1\r\ncmbSize=1\r\n");
    EXPECT_EQ(window().chkAuto.value(), 0);
    EXPECT_EQ(window().cmbSize.listIndex(), 0);
}

TEST_F(Settings, AreAppliedAsIfTheUserHadClicked) {
    startWith("[USB Tool]\r\nchkAuto=1\r\ncmbSize=1\r\n");
    EXPECT_EQ(window().chkAuto.value(), 1);
    EXPECT_EQ(window().cmbSize.listIndex(), 1);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(window().lblSize[i].caption(), "GB");
    EXPECT_EQ(window().lblHDSize.caption(), "4,000");
    EXPECT_TRUE(arrivalsCount());
}

TEST_F(Settings, OtherKeysAndSectionsAreIgnored) {
    startWith("[A]\r\nchkAuto=1\r\n[USB "
              "Tool]\r\ntxtFAT=9\r\nx=abc\r\nCHKAuto=1\r\ncmbSize=1\r\n[B]\r\ncmbSize=0\r\n");
    EXPECT_EQ(window().chkAuto.value(), 0);
    EXPECT_EQ(window().cmbSize.listIndex(), 1);
    EXPECT_FALSE(ended());
}

TEST_F(Settings, ControlNamesMatchRegardlessOfCase) {
    startWith("[USB Tool]\r\nchkAUTO=1\r\n");
    EXPECT_EQ(window().chkAuto.value(), 1);
}

TEST_F(Settings, MinusOneIsAChoiceOfNoUnit) {
    startWith("[USB Tool]\r\ncmbSize=-1\r\n");
    EXPECT_EQ(window().cmbSize.listIndex(), -1);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(window().lblSize[i].caption(), "");
    EXPECT_EQ(window().lblHDSize.caption(), "4096,00");
    click(window().cmdSearch);
    EXPECT_EQ(window().lblHDSize.caption(), "4096,00");
    EXPECT_FALSE(ended());
}

TEST_F(Settings, AValueThatIsNoNumberIsTheEnd) {
    startWith("[USB Tool]\r\nchkAuto=yes\r\n");
    expectReport(ErrorNumber::TypeMismatch, path + ", chkAuto=yes"s);
}

TEST_F(Settings, AnEmptyValueIsNoNumber) {
    startWith("[USB Tool]\r\nchkAuto=\r\n");
    expectReport(ErrorNumber::TypeMismatch, path + ", chkAuto="s);
}

TEST_F(Settings, AValueBeyondSixteenBitsIsTheEnd) {
    startWith("[USB Tool]\r\ncmbSize=32768\r\n");
    expectReport(ErrorNumber::Overflow, path + ", cmbSize=32768"s);
}

TEST_F(Settings, AStateThatDoesNotExistIsTheEnd) {
    startWith("[USB Tool]\r\nchkAuto=3\r\n");
    expectReport(ErrorNumber::InvalidProcedureCall, path + ", chkAuto=3"s);
}

TEST_F(Settings, AnEntryThatDoesNotExistIsTheEnd) {
    startWith("[USB Tool]\r\ncmbSize=2\r\n");
    expectReport(ErrorNumber::InvalidProcedureCall, path + ", cmbSize=2"s);
}

TEST_F(Settings, AKeyThatNamesNoControlIsTheEnd) {
    startWith("[USB Tool]\r\nchkOther=1\r\n");
    expectReport(ErrorNumber::ControlNotFound, path + ", chkOther=1"s);
}

TEST_F(Settings, AKeyWithoutAValueIsTheEnd) {
    startWith("[USB Tool]\r\nchkAuto\r\n");
    expectReport(
        ErrorNumber::SubscriptOutOfRange, path,
        "In einer Zeile der Datei fehlt \"=\". Ergänzen Sie es, oder löschen Sie die Datei, und starten "
        "Sie das Programm neu.");
}

TEST_F(Settings, ClosingWritesBothKeysInOrderAndNothingElse) {
    startWith("; mine\r\n[Other]\r\na=1\r\n[USB Tool]\r\nx=1\r\nchkAuto=1\r\n");
    event([this] { window().cmbSize.choose(1); });
    close();
    EXPECT_EQ(computer().files[path].contents, "[USB Tool]\r\nchkAuto=1\r\ncmbSize=1\r\n");
}

TEST_F(Settings, ClosingWritesTheDefaults) {
    start();
    close();
    EXPECT_EQ(computer().files[path].contents, "[USB Tool]\r\nchkAuto=0\r\ncmbSize=0\r\n");
}

TEST_F(Settings, NoUnitIsWrittenAsMinusOne) {
    startWith("[USB Tool]\r\ncmbSize=-1\r\n");
    close();
    EXPECT_EQ(computer().files[path].contents, "[USB Tool]\r\nchkAuto=0\r\ncmbSize=-1\r\n");
}

TEST_F(Settings, ChangingAControlDoesNotWriteTheFile) {
    start();
    event([this] { window().chkAuto.click(); });
    event([this] { window().cmbSize.choose(1); });
    EXPECT_EQ(computer().files.count(path), 0U);
}

TEST_F(Settings, WhatTheProgramWroteItReadsAgain) {
    start();
    event([this] { window().chkAuto.click(); });
    event([this] { window().cmbSize.choose(1); });
    close();
    toolkit::resetEnding();
    start();
    EXPECT_EQ(window().chkAuto.value(), 1);
    EXPECT_EQ(window().cmbSize.text(), "GB");
    EXPECT_FALSE(toolkit::ending().atOnce);
}

TEST_F(Settings, AreWrittenAtOnce) {
    startWith("[USB Tool]\r\nchkAuto=1\r\n");
    computer().writes.clear();
    close();
    EXPECT_EQ(computer().writes, std::vector<std::string>{path});
}

TEST_F(Settings, AFileThatCannotBeWrittenStaysAndIsTold) {
    const std::string before = "[USB Tool]\r\nchkAuto=1\r\n";
    startWith(before);
    computer().fails = [](const std::string& operation) { return operation.starts_with("write "); };
    testing::internal::CaptureStderr();
    close();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              std::string(path) + ": Die Einstellungen konnten nicht gespeichert werden.\n");
    EXPECT_EQ(computer().files[path].contents, before);
    EXPECT_TRUE(computer().messages.empty());
    EXPECT_EQ(status(), 0);
    EXPECT_FALSE(toolkit::ending().atOnce);
}

TEST_F(Settings, WhatWasNotLoadedIsNotSaved) {
    const std::string before = "[USB Tool]\r\nchkAuto=1\r\ncmbSize=1\r\n";
    putFile(path, before);
    plugIn("E:\\"); // two sticks: the load asks which one is meant
    bool asked = false;
    computer().onModal = [&](toolkit::Form&) {
        asked = true;
        window().unload();
    };
    start();
    EXPECT_TRUE(asked);
    EXPECT_TRUE(ended());
    EXPECT_EQ(computer().files[path].contents, before);
}

TEST_F(Settings, LieInTheFolderForSettings) {
    computer().settingsFolder = "/home/user/config";
    start();
    close();
    EXPECT_EQ(computer().files.count("/home/user/config\\Settings.ini"), 1U);
    EXPECT_EQ(computer().files.count(path), 0U);
}

class AutomaticDetection : public Settings {};

TEST_F(AutomaticDetection, FollowsTheCheckBox) {
    start();
    EXPECT_FALSE(arrivalsCount());
    event([this] { window().chkAuto.click(); });
    EXPECT_TRUE(arrivalsCount());
    event([this] { window().chkAuto.click(); });
    EXPECT_FALSE(arrivalsCount());
    event([this] { window().chkAuto.setValue(toolkit::CheckBox::Grayed); });
    EXPECT_TRUE(arrivalsCount()) << "any state but unchecked";
}

class UnitOfCapacities : public Settings {};

TEST_F(UnitOfCapacities, AnotherUnitShowsTheFiguresAnew) {
    start();
    const int scans = computer().driveScans;
    event([this] { window().cmbSize.choose(1); });
    EXPECT_EQ(window().lblHDSize.caption(), "4,000");
    EXPECT_EQ(window().lblSize[2].caption(), "GB");
    EXPECT_EQ(computer().driveScans, scans) << "a stick is known: no scan";
}

TEST_F(UnitOfCapacities, WithoutAStickItLooksForOne) {
    pullOut("D:\\");
    start();
    EXPECT_EQ(window().StatusBar1.panel(1).text(), "No Stick");
    plugIn("D:\\");
    event([this] { window().cmbSize.choose(0); });
    EXPECT_EQ(window().lblLW.caption(), "D:\\");
    EXPECT_EQ(window().lblHDSize.caption(), "4096,00");
    EXPECT_EQ(window().lblSize[0].caption(), "MB");
}
