// The assistant while the formatter runs, and what became of it.
#include "format_assistant.h"

#include "toolkit/dispatch.h"

using fake::Child;
using fake::computer;
using fake::console;

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

TEST_F(FormatAssistant, TheBarMovesAsLongAsTheFormatterRuns) {
    goToThirdStep();
    toolkit::ProgressState during{};
    std::string text;
    console().onStart = [&](Child& child) {
        during = assistant.prgFormat.state();
        text = assistant.prgFormat.text();
        child.write("Done");
        child.exit();
    };
    toolkit::ProgressState afterwards = toolkit::ProgressState::UnknownShare;
    computer().answer = [&](const fake::Message& message) {
        if (message.text == "Formatierung abgeschlossen.") afterwards = assistant.prgFormat.state();
        return 1;
    };
    assistant.Command1.click();
    EXPECT_EQ(during, toolkit::ProgressState::UnknownShare);
    EXPECT_EQ(text, "Wird formatiert – Platte nicht abziehen");
    EXPECT_EQ(afterwards, toolkit::ProgressState::None);
    expectEnded();
}
