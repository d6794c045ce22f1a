// A drive's facts, and giving the stick another label.

#include "main_window.h"
#include "recording_view.h"

using unit::GB;
using unit::MainWindow;

class VolumeLabel : public MainWindow {
protected:
    VolumeLabel() { start(); }

    void rename(const std::string& label) {
        window().txtDT_Cap.setText(label);
        click(window().Command1);
    }
    static std::string label() { return computer().drives["D:\\"].label; }
};

TEST_F(VolumeLabel, IsGivenToTheStick) {
    rename("MUSIK");
    EXPECT_EQ(label(), "MUSIK");
    EXPECT_TRUE(computer().messages.empty());
}

TEST_F(VolumeLabel, MayBeEmpty) {
    rename("");
    EXPECT_EQ(label(), "");
}

TEST_F(VolumeLabel, ElevenCharactersAreAccepted) {
    rename("12345678901");
    EXPECT_EQ(label(), "12345678901");
    rename("ÄÖÜäöüßÄÖÜä");
    EXPECT_EQ(label(), "ÄÖÜäöüßÄÖÜä") << "characters are counted, not bytes";
}

TEST_F(VolumeLabel, TwelveCharactersAreRefusedAndSelectedFromTheTwelfthOn) {
    rename("123456789012");
    EXPECT_EQ(label(), "STICK");
    ASSERT_EQ(computer().messages.size(), 1U);
    EXPECT_EQ(computer().messages[0].text, "maximale Länge der Datenträgerbezeichnung ist 11 Zeichen");
    EXPECT_EQ(computer().messages[0].style, 64);
    EXPECT_EQ(computer().messages[0].title, unit::title);
    EXPECT_EQ(window().txtDT_Cap.selection(), (toolkit::TextBox::Selection{11, 1}));
    EXPECT_EQ(window().txtDT_Cap.text(), "123456789012");
    rename("ÄÖÜäöüßÄÖÜäöüß");
    EXPECT_EQ(window().txtDT_Cap.selection(), (toolkit::TextBox::Selection{11, 3}));
    EXPECT_EQ(label(), "STICK");
}

TEST_F(VolumeLabel, ARefusedOneHasTheKeyboardAfterItsSelection) {
    unit::RecordingView view;
    window().txtDT_Cap.setText("123456789012");
    window().txtDT_Cap.attach(&view);
    click(window().Command1);
    window().txtDT_Cap.attach(nullptr);
    EXPECT_EQ(view.shown, (std::vector{toolkit::Property::Selection, toolkit::Property::Focus}));
}

TEST_F(VolumeLabel, CharactersAreNotChecked) {
    rename("a*b?c");
    EXPECT_EQ(label(), "a*b?c");
}

TEST_F(VolumeLabel, AFailureIsToldByTheBoxItself) {
    const std::string usual = "Datenträgerbezeichnung, höchstens 11 Zeichen";
    EXPECT_EQ(window().txtDT_Cap.toolTip(), usual);
    const fake::Drive stick = computer().drives["D:\\"];
    computer().drives.erase("D:\\");
    rename("Müll");
    EXPECT_TRUE(computer().messages.empty()) << "no message box";
    EXPECT_FALSE(ended());
    EXPECT_EQ(
        window().txtDT_Cap.toolTip(),
        "Der Stick hat diese Bezeichnung nicht angenommen und behält die alte. Vielleicht wird er gerade "
        "benutzt, ist schreibgeschützt, oder sein Dateisystem erlaubt eines der Zeichen nicht.");
    EXPECT_EQ(window().txtDT_Cap.text(), "Müll");
    EXPECT_EQ(window().txtDT_Cap.selection(), (toolkit::TextBox::Selection{0, 4}));
    computer().drives["D:\\"] = stick;
    rename("MUSIK");
    EXPECT_EQ(window().txtDT_Cap.toolTip(), usual);
}

TEST_F(VolumeLabel, ARefusalIsForgottenWithTheNextSearch) {
    const fake::Drive stick = computer().drives["D:\\"];
    computer().drives.erase("D:\\");
    rename("X");
    computer().drives["D:\\"] = stick;
    click(window().cmdSearch);
    EXPECT_EQ(window().txtDT_Cap.toolTip(), "Datenträgerbezeichnung, höchstens 11 Zeichen");
}

TEST_F(VolumeLabel, ARefusalIsForgottenWhenTheStickIsGone) {
    computer().drives.erase("D:\\");
    rename("X");
    ASSERT_NE(window().txtDT_Cap.toolTip(), "Datenträgerbezeichnung, höchstens 11 Zeichen");
    click(window().cmdSearch);
    EXPECT_EQ(window().StatusBar1.panel(1).text(), "No Stick");
    EXPECT_EQ(window().txtDT_Cap.toolTip(), "Datenträgerbezeichnung, höchstens 11 Zeichen");
}

TEST_F(VolumeLabel, AnotherStickInItsPlaceKeepsItsOwn) {
    computer().drives["D:\\"].medium = "another";
    rename("MUSIK");
    EXPECT_EQ(label(), "STICK");
    click(window().cmdSearch);
    rename("MUSIK");
    EXPECT_EQ(label(), "MUSIK") << "shown by now";
}

TEST_F(VolumeLabel, AStickThatIsNotShownKeepsItsOwn) {
    drive().RemoveUSB_Info();
    rename("MUSIK");
    EXPECT_EQ(label(), "STICK");
    EXPECT_FALSE(ended());
}

class DriveFacts : public VolumeLabel {};

TEST_F(DriveFacts, SizesAreExactBeyond32Bits) {
    plugIn("E:\\", 4 * GB, 4 * GB - 1);
    drive().mp_GetDiskSpace("E:\\");
    EXPECT_EQ(drive().TotalSpace(), 4.0 * 1024 * 1024 * 1024);
    EXPECT_EQ(drive().TotalFreeSpace(), 4.0 * 1024 * 1024 * 1024 - 1)
        << "all that is free, not the user's part";
}

TEST_F(DriveFacts, ADriveWithoutAMediumHasNoSize) {
    drive().mp_GetDiskSpace("D:\\");
    ASSERT_GT(drive().TotalSpace(), 0);
    drive().mp_GetDiskSpace("Q:\\");
    EXPECT_EQ(drive().TotalSpace(), 0);
    EXPECT_EQ(drive().TotalFreeSpace(), 0);
}

TEST_F(DriveFacts, EightBytesMakeANumberLowestFirst) {
    EXPECT_EQ(cDrive::mp_BytesToDouble({}), 0);
    EXPECT_EQ(cDrive::mp_BytesToDouble({1, 2, 3}), 1 + 2 * 256 + 3 * 65536);
    EXPECT_EQ(cDrive::mp_BytesToDouble({0, 0, 0, 0, 1}), 4294967296.0);
    EXPECT_EQ(cDrive::mp_BytesToDouble({0, 0, 0, 0, 0, 0, 0, 0x80}), 9223372036854775808.0) << "unsigned";
}

TEST_F(DriveFacts, LabelAndFileSystemAreReadTogether) {
    computer().drives["D:\\"].label = "MEIN STICK";
    computer().drives["D:\\"].fileSystem = "exFAT";
    EXPECT_EQ(drive().mp_GetDriveName("D:\\"), "MEIN STICK");
    EXPECT_EQ(drive().mp_FileSystem(), "exFAT");
    EXPECT_EQ(drive().mp_GetDriveName("Q:\\"), "");
    EXPECT_EQ(drive().mp_FileSystem(), "");
}
