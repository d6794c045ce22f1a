#include "format/Form1.h"

#include "app/frmMain.h"
#include "fake.h"
#include "fake_process.h"
#include "toolkit/dispatch.h"

#include <gtest/gtest.h>

using fake::Child;
using fake::computer;
using fake::console;
using namespace std::chrono_literals;

namespace {

constexpr const char* firstText =
    "Vergewisseren Sie sich dass die USB-Platte NICHT am PC angeschlossen ist und drücken "
    "Sie dann auf WEITER.";
constexpr const char* secondText = "Schließen Sie jetzt die USB-Festplatte an.\r\n\r\nFalls die Festplatte "
                                   "nicht gefunden wird, schließen Sie die "
                                   "Platte nochmal ab und gehen einen Schritt ZURÜCK.";
constexpr const char* thirdText = "USB-Festplatte gefunden!\r\nLaufwerksbuchstabe: E:";

class FormatAssistant : public testing::Test {
protected:
    FormatAssistant() {
        fake::reset();
        fake::resetConsole();
        computer().drives["C:\\"].type = platform::DriveFixed;
        computer().drives["Z:\\"].type = platform::DriveRemote;
        for (const char* name : {"file.bmp", "nofile.bmp"})
            computer().files[std::string("/opt/tool\\") + name].contents = "picture";
        setAdministrator(true);
        window.show();
        assistant.show(&window);
        computer().messages.clear();
        computer().windows.clear();
    }

    static void setAdministrator(bool is) {
        fake::accounts().user = "anna";
        fake::accounts().groups["Administratoren"] = {is ? "anna" : "bert"};
    }

    static void plug(const std::string& root, std::uint32_t type = platform::DriveFixed) {
        computer().drives[root].type = type;
        computer().drives[root].total = 1000;
    }

    void goToSecondStep() { assistant.Command1.click(); }

    void goToThirdStep() {
        goToSecondStep();
        plug("E:\\");
        assistant.Timer1.tick();
    }

    /// The formatter writes that and ends.
    static void formatterWrites(const std::string& text) {
        console().onStart = [text](Child& child) {
            child.write(text);
            child.exit();
        };
    }

    void expectStep(const std::string& title, const std::string& text, bool next) {
        EXPECT_EQ(assistant.Label3.caption(), title);
        EXPECT_EQ(assistant.Label2.caption(), text);
        EXPECT_EQ(assistant.Command1.enabled(), next);
    }
    void expectFirstStep() { expectStep("Schritt 1:", firstText, true); }
    void expectSecondStep() { expectStep("Schritt 2:", secondText, false); }
    void expectThirdStep() { expectStep("Schritt 3:", thirdText, true); }

    void expectEnded() {
        EXPECT_FALSE(assistant.loaded());
        EXPECT_TRUE(window.loaded());
        EXPECT_EQ(computer().windows, (std::vector<std::string>{"close Form1", "open frmMain"}));
    }

    app::Program program;
    frmMain window{program};
    Form1 assistant{window};
};

} // namespace

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

TEST_F(FormatAssistant, AsksBeforeItFormats) {
    goToThirdStep();
    computer().answer = [](const fake::Message&) { return 2; };
    assistant.Command1.click();
    ASSERT_EQ(computer().messages.size(), 1U);
    EXPECT_EQ(computer().messages[0].style, 1);
    EXPECT_EQ(computer().messages[0].title, "Wollen Sie formatieren ?");
    EXPECT_EQ(
        computer().messages[0].text,
        "ACHTUNG: ALLE DATEN AUF DER USB-DISK WERDEN GELÖSCHT:\r\n\r\nWollen Sie wirklich die Festplatte E: "
        "formatieren?\r\n\r\nFür Datenverlust wird keine Haftung übernommen.\r\n\r\nFormatieren mit OK ?");
}

TEST_F(FormatAssistant, CancelChangesNothing) {
    goToThirdStep();
    computer().answer = [](const fake::Message&) { return 2; };
    assistant.Command1.click();
    EXPECT_TRUE(console().calls.empty());
    EXPECT_TRUE(assistant.loaded());
    expectThirdStep();
}

TEST_F(FormatAssistant, RunsTheFormatterBesideTheProgram) {
    goToThirdStep();
    formatterWrites("Done");
    assistant.Command1.click();
    EXPECT_EQ(console().commandLines, std::vector<std::string>{"/opt/tool\\fat32format.exe -c64 E:"});
}

TEST_F(FormatAssistant, ProgramFolderThatIsARoot) {
    goToThirdStep();
    computer().folder = "C:\\";
    formatterWrites("Done");
    assistant.Command1.click();
    EXPECT_EQ(console().commandLines, std::vector<std::string>{"C:\\fat32format.exe -c64 E:"});
}

TEST_F(FormatAssistant, ReportsSuccess) {
    goToThirdStep();
    formatterWrites("Formatting...\nDone\n");
    assistant.Command1.click();
    ASSERT_EQ(computer().messages.size(), 2U);
    EXPECT_EQ(computer().messages[1].text, "Formatierung abgeschlossen.");
    EXPECT_EQ(computer().messages[1].style, 0);
    EXPECT_EQ(computer().messages[1].title, "");
    expectEnded();
}

TEST_F(FormatAssistant, AnythingElseIsFailure) {
    for (const char* output : {"", "done", "DONE", "Do\nne", "Refused."}) {
        computer().messages.clear();
        computer().drives.erase("E:\\");
        assistant.show(&window);
        computer().windows.clear();
        goToThirdStep();
        formatterWrites(output);
        assistant.Command1.click();
        ASSERT_EQ(computer().messages.size(), 2U);
        EXPECT_EQ(computer().messages[1].text, "Formatierung fehlgeschlagen.") << output;
        EXPECT_EQ(computer().messages[1].style, 0);
        EXPECT_EQ(computer().messages[1].title, "");
        expectEnded();
    }
}

TEST_F(FormatAssistant, MissingFormatter) {
    goToThirdStep();
    console().startFails = true;
    assistant.Command1.click();
    ASSERT_EQ(computer().messages.size(), 3U);
    EXPECT_EQ(computer().messages[1].text, "New process could not be created!");
    EXPECT_EQ(computer().messages[2].text, "Formatierung fehlgeschlagen.");
    expectEnded();
}

TEST_F(FormatAssistant, OpenedAgainItBeginsAnew) {
    goToSecondStep();
    assistant.closeRequested();
    assistant.show(&window);
    expectFirstStep();
    EXPECT_TRUE(assistant.Command2.enabled());
    assistant.Command2.click();
    assistant.closeRequested();
    assistant.show(&window);
    EXPECT_TRUE(assistant.Command2.enabled());
}

TEST_F(FormatAssistant, NoSecondFormatterBesideARunningOne) {
    goToThirdStep();
    computer().onPump = [this] {
        assistant.Command1.click();
        if (computer().pumps >= 3) console().child.exit();
    };
    assistant.Command1.click();
    EXPECT_EQ(console().commandLines.size(), 1U);
    EXPECT_EQ(computer().messages.size(), 2U);
}

TEST_F(FormatAssistant, FormatterMayRunAgainAfterItEnded) {
    goToThirdStep();
    formatterWrites("");
    assistant.Command1.click();
    computer().drives.erase("E:\\");
    assistant.show(&window);
    goToThirdStep();
    assistant.Command1.click();
    EXPECT_EQ(console().commandLines.size(), 2U);
}

TEST_F(FormatAssistant, BackWhileTheFormatterRuns) {
    goToThirdStep();
    computer().onPump = [this] {
        if (computer().pumps == 1) assistant.Command2.click();
        if (computer().pumps == 2) console().child.exit();
    };
    assistant.Command1.click();
    EXPECT_EQ(computer().messages.back().text, "Formatierung fehlgeschlagen.");
    expectEnded();
}

TEST_F(FormatAssistant, ClosingItAsksWhetherToCancelTheFormatter) {
    goToThirdStep();
    computer().answer = [](const fake::Message& message) { return message.style == 1 ? 1 : 7; };
    computer().onPump = [this] {
        if (computer().pumps == 3) assistant.closeRequested();
        if (computer().pumps == 5) console().child.write("Done");
        if (computer().pumps == 6) console().child.exit();
    };
    assistant.Command1.click();
    ASSERT_EQ(computer().messages.size(), 3U);
    EXPECT_EQ(computer().messages[1].text, "Die Festplatte wird gerade formatiert. Wirklich abbrechen?");
    EXPECT_EQ(computer().messages[1].style, 4 + 48 + 256) << "yes and no, an exclamation mark, no first";
    EXPECT_EQ(computer().messages[1].title, "");
    EXPECT_EQ(computer().messages[2].text, "Formatierung abgeschlossen.");
    EXPECT_EQ(console().calls[3], "close process") << "not ended by the program";
    expectEnded();
}

TEST_F(FormatAssistant, CancelledFormatterIsNoSuccess) {
    goToThirdStep();
    console().onStart = [](Child& child) { child.write("Done"); };
    computer().onPump = [this] {
        if (computer().pumps == 3) assistant.closeRequested();
    };
    assistant.Command1.click();
    EXPECT_EQ(computer().pumps, 3);
    EXPECT_EQ(console().calls[3], "end");
    EXPECT_EQ(computer().messages.back().text, "Formatierung fehlgeschlagen.");
    expectEnded();
}

TEST_F(FormatAssistant, FormatterThatEndsBehindTheQuestionIsNotCancelled) {
    goToThirdStep();
    computer().answer = [](const fake::Message& message) {
        if (message.style == 1) return 1;
        console().child.write("Done");
        console().child.exit();
        return 6;
    };
    computer().onPump = [this] {
        if (assistant.loaded()) assistant.closeRequested();
    };
    assistant.Command1.click();
    EXPECT_EQ(computer().messages.back().text, "Formatierung abgeschlossen.");
    expectEnded();
}

TEST_F(FormatAssistant, ClosingItTwiceAsksOnce) {
    goToThirdStep();
    computer().answer = [this](const fake::Message& message) {
        if (message.style == 1) return 1;
        assistant.closeRequested();
        console().child.exit();
        return 7;
    };
    computer().onPump = [this] {
        if (computer().pumps == 1) assistant.closeRequested();
    };
    assistant.Command1.click();
    EXPECT_EQ(computer().messages.size(), 3U);
}

TEST_F(FormatAssistant, ClosingItOtherwiseAsksNothing) {
    goToThirdStep();
    assistant.closeRequested();
    EXPECT_TRUE(computer().messages.empty());
    EXPECT_FALSE(assistant.loaded());
}

// Nobody but an administrator goes on, but the formatter is not ended unasked.
TEST_F(FormatAssistant, LostRightsDoNotEndTheFormatterUnasked) {
    goToThirdStep();
    computer().answer = [](const fake::Message& message) { return message.style == 1 ? 1 : 7; };
    computer().onPump = [this] {
        if (computer().pumps == 1) {
            setAdministrator(false);
            assistant.Command1.click();
            EXPECT_TRUE(assistant.loaded());
        }
        if (computer().pumps == 2) console().child.exit();
    };
    assistant.Command1.click();
    EXPECT_EQ(console().calls[3], "close process");
    ASSERT_EQ(computer().messages.size(), 4U);
    EXPECT_EQ(computer().messages[1].style, 16);
    EXPECT_EQ(computer().messages[2].style, 308);
}

TEST_F(FormatAssistant, ClosingAndOpeningItEndsTheFormatter) {
    goToThirdStep();
    computer().onPump = [this] {
        if (computer().pumps > 1) return;
        assistant.closeRequested();
        assistant.show(&window);
    };
    assistant.Command1.click();
    EXPECT_EQ(console().calls[3], "end");
}

TEST_F(FormatAssistant, ClosingTheMainWindowEndsTheFormatterAndTouchesNothing) {
    goToThirdStep();
    computer().onPump = [this] {
        if (computer().pumps == 3) toolkit::dispatch([this] { window.closeRequested(); });
    };
    toolkit::dispatch([this] { assistant.Command1.click(); });
    EXPECT_EQ(console().calls,
              (std::vector<std::string>{"pipe", "start", "answer y", "end", "close process", "close pipe"}));
    EXPECT_EQ(computer().messages.size(), 1U) << "only the question";
    EXPECT_EQ(toolkit::ending().status, 0);
    EXPECT_FALSE(toolkit::ending().atOnce);
    EXPECT_EQ(computer().windows, std::vector<std::string>{"close frmMain"});
}

TEST_F(FormatAssistant, QuestionWhoseWindowIsGoneIsNotAnswered) {
    goToThirdStep();
    computer().answer = [this](const fake::Message&) {
        assistant.closeRequested();
        return 1;
    };
    assistant.Command1.click();
    EXPECT_TRUE(console().calls.empty());
}
