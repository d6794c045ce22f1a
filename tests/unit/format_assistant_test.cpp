// Which disk it is that the assistant formats: its steps, and what it asks for before.
#include "format_assistant.h"

using fake::computer;
using fake::console;
using namespace std::chrono_literals;

TEST_F(FormatAssistant, TextsAtDesign) {
    EXPECT_EQ(assistant.name(), "Form1");
    EXPECT_EQ(assistant.caption(), "Fat32 Format Assistent");
    EXPECT_EQ(assistant.Label1.caption(), "Fat 32 Format Assistent:");
    EXPECT_EQ(assistant.Command1.caption(), "WEITER >>>");
    EXPECT_EQ(assistant.Command2.caption(), "<<< Zurück");
    for (const char* name : {"Label1", "Label2", "Label3", "Command1", "Command2", "Timer1"})
        EXPECT_NE(assistant.find(name), nullptr) << name;
}

TEST_F(FormatAssistant, TimerAlwaysRuns) {
    EXPECT_EQ(assistant.Timer1.interval(), 4000ms);
    EXPECT_TRUE(assistant.Timer1.enabled());
    goToThirdStep();
    EXPECT_TRUE(assistant.Timer1.enabled());
}

TEST_F(FormatAssistant, BeginsWithTheFirstStep) {
    expectFirstStep();
    EXPECT_TRUE(assistant.Command2.enabled());
}

TEST_F(FormatAssistant, NoDiskIsLookedForInTheFirstStep) {
    const int scans = computer().driveScans;
    plug("E:\\");
    assistant.Timer1.tick();
    expectFirstStep();
    EXPECT_EQ(computer().driveScans, scans);
}

TEST_F(FormatAssistant, WaitsForTheDiskInTheSecondStep) {
    goToSecondStep();
    expectSecondStep();
    EXPECT_TRUE(assistant.Command2.enabled());
    assistant.Timer1.tick();
    expectSecondStep();
}

TEST_F(FormatAssistant, FindsTheDisk) {
    goToThirdStep();
    expectThirdStep();
    EXPECT_TRUE(assistant.Command2.enabled());
}

TEST_F(FormatAssistant, StickLeavesTheSecondStepNever) {
    goToSecondStep();
    plug("E:\\", platform::DriveRemovable);
    plug("F:\\", platform::DriveCdRom);
    assistant.Timer1.tick();
    expectSecondStep();
}

TEST_F(FormatAssistant, DiskThatWasThereInTheFirstStepIsNotFound) {
    plug("E:\\");
    goToSecondStep();
    assistant.Timer1.tick();
    expectSecondStep();
}

TEST_F(FormatAssistant, NothingIsLookedForInTheThirdStep) {
    goToThirdStep();
    plug("F:\\");
    assistant.Timer1.tick();
    expectThirdStep();
}

TEST_F(FormatAssistant, DiskThatGoesLeadsBackToTheSecondStep) {
    goToThirdStep();
    computer().drives.erase("E:\\");
    assistant.Timer1.tick();
    expectSecondStep();
    EXPECT_TRUE(assistant.Command2.enabled());
    assistant.Timer1.tick();
    expectSecondStep();
    plug("E:\\");
    assistant.Timer1.tick();
    expectThirdStep();
}

TEST_F(FormatAssistant, AnotherDiskInItsPlaceIsFoundAnew) {
    goToThirdStep();
    computer().drives["E:\\"].medium = "another";
    assistant.Timer1.tick();
    expectSecondStep();
    assistant.Timer1.tick();
    expectThirdStep();
    formatterWrites("Done");
    assistant.Command1.click();
    EXPECT_EQ(console().commandLines.size(), 1U);
}

TEST_F(FormatAssistant, DiskThatCannotBeToldFromOthersIsNotFound) {
    goToSecondStep();
    plug("E:\\");
    computer().drives["E:\\"].total = 0;
    assistant.Timer1.tick();
    expectSecondStep();
    computer().drives["E:\\"].total = 1000;
    assistant.Timer1.tick();
    expectThirdStep();
}

TEST_F(FormatAssistant, DiskThatCannotBeToldAnyMoreIsNotFormatted) {
    goToThirdStep();
    computer().drives["E:\\"].total = 0;
    assistant.Command1.click();
    EXPECT_TRUE(computer().messages.empty());
    EXPECT_TRUE(console().calls.empty());
    expectSecondStep();
}

TEST_F(FormatAssistant, DiskThatBecomesAnotherKindOfDriveIsGone) {
    goToThirdStep();
    plug("E:\\", platform::DriveRemovable);
    assistant.Timer1.tick();
    expectSecondStep();
}

TEST_F(FormatAssistant, AnotherDiskInItsPlaceIsNotAskedAbout) {
    goToThirdStep();
    computer().drives["E:\\"].medium = "another";
    assistant.Command1.click();
    EXPECT_TRUE(computer().messages.empty());
    EXPECT_TRUE(console().calls.empty());
    expectSecondStep();
}

TEST_F(FormatAssistant, DiskThatIsExchangedBehindTheQuestionIsNotFormatted) {
    goToThirdStep();
    computer().answer = [this](const fake::Message&) {
        computer().drives["E:\\"].medium = "another";
        assistant.Timer1.tick();
        assistant.Timer1.tick();
        return 1;
    };
    assistant.Command1.click();
    EXPECT_EQ(computer().messages.size(), 1U);
    EXPECT_TRUE(console().calls.empty());
    expectSecondStep();
}

TEST_F(FormatAssistant, AnotherDiskThatIsFoundBehindTheQuestionIsNotFormatted) {
    goToThirdStep();
    computer().answer = [this](const fake::Message&) {
        computer().drives.erase("E:\\");
        plug("F:\\");
        assistant.Command2.click();
        assistant.Command1.click();
        assistant.Timer1.tick();
        return 1;
    };
    assistant.Command1.click();
    EXPECT_TRUE(console().calls.empty());
}

TEST_F(FormatAssistant, DiskThatChangesWhileItIsFormattedIsTheSame) {
    goToThirdStep();
    computer().onPump = [this] {
        computer().drives["E:\\"].medium = "formatted";
        assistant.Timer1.tick();
        expectThirdStep();
        if (computer().pumps > 1) return;
        console().child.write("Done");
        console().child.exit();
    };
    assistant.Command1.click();
    EXPECT_EQ(computer().messages.back().text, "Formatierung abgeschlossen.");
}

TEST_F(FormatAssistant, BackFromTheSecondStepRetakesTheSnapshot) {
    plug("D:\\");
    goToSecondStep();
    assistant.Command2.click();
    expectFirstStep();
    EXPECT_FALSE(assistant.Command2.enabled());
    computer().drives.erase("D:\\");
    goToSecondStep();
    EXPECT_TRUE(assistant.Command2.enabled());
    plug("E:\\");
    assistant.Timer1.tick();
    expectThirdStep();
}

TEST_F(FormatAssistant, BackFromTheThirdStepRetakesTheSnapshot) {
    goToThirdStep();
    assistant.Command2.click();
    expectFirstStep();
    EXPECT_FALSE(assistant.Command2.enabled());
    goToSecondStep();
    assistant.Timer1.tick();
    expectSecondStep();
}

TEST_F(FormatAssistant, NextInTheSecondStepIsDeaf) {
    goToSecondStep();
    assistant.Command1.click();
    expectSecondStep();
}

TEST_F(FormatAssistant, NobodyButAnAdministratorGoesOn) {
    setAdministrator(false);
    assistant.Command1.click();
    ASSERT_EQ(computer().messages.size(), 1U);
    EXPECT_EQ(computer().messages[0].style, 16);
    EXPECT_EQ(computer().messages[0].title, "Keine Administrator-Rechte !");
    EXPECT_EQ(computer().messages[0].text, "Zum Formatieren benötigen Sie Administrator-Rechte\r\nMelden Sie "
                                           "sich bei Windows als Administrator an, "
                                           "oder verständigen Sie Ihren Systemadministrator!");
    expectEnded();
}

TEST_F(FormatAssistant, RightsAreAskedForAtEachPress) {
    goToThirdStep();
    setAdministrator(false);
    assistant.Command1.click();
    ASSERT_EQ(computer().messages.size(), 1U);
    EXPECT_EQ(computer().messages[0].style, 16);
    EXPECT_TRUE(console().commandLines.empty());
    expectEnded();
}

TEST_F(FormatAssistant, TellsWhichDiskItFound) {
    goToSecondStep();
    EXPECT_EQ(assistant.lblDisk.caption(), "");
    plug("E:\\");
    computer().drives["E:\\"].maker = "WD";
    computer().drives["E:\\"].model = "Elements 25A2";
    computer().drives["E:\\"].total = 500107862016;
    computer().drives["E:\\"].label = "BACKUP";
    assistant.Timer1.tick();
    expectThirdStep();
    EXPECT_EQ(assistant.lblDisk.caption(), "WD Elements 25A2, 465,8 GB, Bezeichnung \"BACKUP\"");
    assistant.Command2.click();
    EXPECT_EQ(assistant.lblDisk.caption(), "");
    computer().drives.erase("E:\\");
    goToThirdStep();
    EXPECT_NE(assistant.lblDisk.caption(), "");
    computer().drives.erase("E:\\");
    assistant.Timer1.tick();
    expectSecondStep();
    EXPECT_EQ(assistant.lblDisk.caption(), "") << "it is gone";
}

TEST_F(FormatAssistant, ShowsNothingOfADiskBeforeThatHasAnswered) {
    goToSecondStep();
    plug("E:\\");
    int asked = 0;
    computer().onDiskAsked = [this, &asked] {
        ++asked;
        expectSecondStep();
    };
    assistant.Timer1.tick();
    EXPECT_EQ(asked, 1);
    expectThirdStep();
}

TEST_F(FormatAssistant, IsOffInASandbox) {
    const std::string off =
        "Im Flatpak ist der Assistent abgeschaltet: Zum Formatieren dient das Paket für Debian "
        "und Ubuntu oder der Ordner des Programms.";
    assistant.unload();
    computer().sandboxed = true;
    assistant.show(&window);
    expectStep("Schritt 1:", off, false);
    assistant.Command1.click();
    assistant.enterPressed(nullptr);
    assistant.Command2.click();
    expectStep("Schritt 1:", off, false);
    EXPECT_TRUE(fake::computer().messages.empty());
    EXPECT_TRUE(console().commandLines.empty());
}
