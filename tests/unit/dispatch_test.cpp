// How errors and endings leave a handler.

#include "main_window.h"

#include "toolkit/message_box.h"
#include "toolkit/pump.h"

#include <stdexcept>

using namespace toolkit;
using unit::errorReport;
using unit::MainWindow;

const std::string startAgain =
    "Starten Sie das Programm neu. Tritt der Fehler wieder auf, melden Sie ihn dem Händler Ihres Receivers.";

class Dispatch : public testing::Test {
protected:
    Dispatch() { fake::reset(); }
    ~Dispatch() override { fake::reset(); }

    static const std::vector<fake::Message>& messages() { return fake::computer().messages; }
};

TEST_F(Dispatch, AnErrorIsReportedAndEndsTheProgramWithStatusOne) {
    dispatch([] { throw base::RuntimeError(base::ErrorNumber::FileNotFound, "E:\\a"); });
    ASSERT_EQ(messages().size(), 1U);
    EXPECT_EQ(messages()[0].text,
              "Laufzeitfehler '53':\r\n\r\nDatei nicht gefunden:\r\nE:\\a\r\n\r\n"
              "Was ist zu tun:\r\nDie Datei gehört zum Programm. Installieren Sie das "
              "Programm neu, oder entpacken Sie sein Archiv noch einmal vollständig.\r\n\r\n"
              "Das Programm wird beendet.");
    EXPECT_EQ(messages()[0].style, Critical);
    EXPECT_EQ(messages()[0].title, "");
    EXPECT_EQ(ending().status, 1);
    EXPECT_TRUE(ending().atOnce);
    EXPECT_EQ(fake::computer().quits, 1);
}

TEST_F(Dispatch, AReportWritesItsSubjectAsTheSystemDoes) {
    writeSubjectsAs([](std::string_view subject) { return "[" + std::string(subject) + "]"; });
    dispatch([] { throw base::RuntimeError(base::ErrorNumber::FileNotFound, "E:\\a"); });
    writeSubjectsAs(nullptr);
    ASSERT_EQ(messages().size(), 1U);
    EXPECT_EQ(messages()[0].text, errorReport(base::ErrorNumber::FileNotFound, "[E:\\a]"));
}

TEST_F(Dispatch, AnErrorWithoutASubjectEndsInItsDescription) {
    dispatch([] { throw base::RuntimeError(base::ErrorNumber::Overflow); });
    ASSERT_EQ(messages().size(), 1U);
    EXPECT_EQ(messages()[0].text, "Laufzeitfehler '6':\r\n\r\nÜberlauf\r\n\r\nWas ist zu tun:\r\n" +
                                      startAgain + "\r\n\r\nDas Programm wird beendet.");
}

TEST_F(Dispatch, WhoRaisesAnErrorMayKnowBetterWhatHelps) {
    dispatch([] { throw base::RuntimeError(base::ErrorNumber::Overflow, "a", "Warten Sie."); });
    ASSERT_EQ(messages().size(), 1U);
    EXPECT_EQ(messages()[0].text, errorReport(base::ErrorNumber::Overflow, "a", "Warten Sie."));
    EXPECT_TRUE(messages()[0].text.ends_with("\r\n\r\nWas ist zu tun:\r\nWarten Sie.\r\n\r\n"
                                             "Das Programm wird beendet."));
}

TEST_F(Dispatch, EveryErrorNumberHasADescription) {
    const std::vector<std::pair<int, std::string>> known = {
        {5, "Ungültiger Prozeduraufruf oder ungültiges Argument"},
        {6, "Überlauf"},
        {9, "Index außerhalb des gültigen Bereichs"},
        {11, "Division durch Null"},
        {13, "Typen unverträglich"},
        {48, "Fehler beim Laden einer DLL"},
        {53, "Datei nicht gefunden"},
        {57, "E/A-Fehler auf dem Gerät"},
        {61, "Datenträger voll"},
        {70, "Zugriff verweigert"},
        {71, "Datenträger nicht bereit"},
        {75, "Fehler beim Zugriff auf Pfad/Datei"},
        {76, "Pfad nicht gefunden"},
        {481, "Ungültiges Bild"},
        {730, "Steuerelement nicht gefunden"},
    };
    for (const auto& [number, text] : known)
        EXPECT_EQ(base::description(static_cast<base::ErrorNumber>(number)), text);
    for (const auto& [number, text] : known)
        EXPECT_GT(std::string(base::advice(static_cast<base::ErrorNumber>(number))).size(), 50U) << text;
    EXPECT_STREQ(base::description(static_cast<base::ErrorNumber>(1)), "Unbekannter Fehler");
}

/// Its text was written for developers, and not in German.
TEST_F(Dispatch, AnyOtherExceptionEndsTheProgramJustSo) {
    testing::internal::CaptureStderr();
    dispatch([] { throw std::runtime_error("broken"); });
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Interner Fehler: broken\n");
    ASSERT_EQ(messages().size(), 1U);
    EXPECT_EQ(messages()[0].text, "Interner Fehler\r\n\r\nWas ist zu tun:\r\n" + startAgain +
                                      "\r\n\r\nDas Programm wird beendet.");
    EXPECT_EQ(ending().status, 1);
}

TEST_F(Dispatch, EventsAfterTheEndAreNotDelivered) {
    int delivered = 0;
    dispatch([&] { ++delivered; });
    endAfterClosing();
    dispatch([&] { ++delivered; });
    EXPECT_EQ(delivered, 1);
}

TEST_F(Dispatch, NoEventIsDeliveredBehindTheReport) {
    int delivered = 0;
    fake::computer().answer = [&](const fake::Message&) {
        dispatch([&] { ++delivered; });
        return int{Ok};
    };
    dispatch([] { throw base::RuntimeError(base::ErrorNumber::Overflow); });
    EXPECT_EQ(delivered, 0);
    EXPECT_EQ(messages().size(), 1U);
}

TEST_F(Dispatch, AnErrorInsideAnotherHandlersPumpIsReportedOnce) {
    fake::computer().onPump = [] { dispatch([] { throw base::RuntimeError(base::ErrorNumber::DiskFull); }); };
    bool after = false;
    dispatch([&] {
        DoEvents();
        after = true;
    });
    EXPECT_FALSE(after);
    EXPECT_EQ(messages().size(), 1U);
    EXPECT_EQ(ending().status, 1);
}

TEST_F(Dispatch, AnErrorAfterTheEndIsNotReported) {
    dispatch([] {
        endAfterClosing();
        throw base::RuntimeError(base::ErrorNumber::DiskFull);
    });
    EXPECT_TRUE(messages().empty());
    EXPECT_EQ(ending().status, 0);
    EXPECT_FALSE(ending().atOnce);
}

TEST_F(Dispatch, TheFirstEndingCounts) {
    endAfterClosing();
    EXPECT_THROW(endAtOnce(), Unwind);
    EXPECT_FALSE(ending().atOnce);
    resetEnding();
    EXPECT_NO_THROW(throwIfEnding());
    EXPECT_EQ(ending().status, 0);
}

TEST_F(Dispatch, EndingAtOnceLeavesTheHandlerAndReportsNothing) {
    bool after = false;
    dispatch([&] {
        endAtOnce();
        after = true;
    });
    EXPECT_FALSE(after);
    EXPECT_TRUE(ending().atOnce);
    EXPECT_EQ(ending().status, 0);
    EXPECT_EQ(fake::computer().quits, 1);
    EXPECT_TRUE(messages().empty());
}

TEST_F(Dispatch, ThePumpReturnsWhileTheProgramGoesOn) {
    DoEvents();
    EXPECT_EQ(fake::computer().pumps, 1);
}

TEST_F(Dispatch, AnEndInThePumpUnwindsTheHandler) {
    fake::computer().onPump = [] { dispatch([] { endAfterClosing(); }); };
    bool after = false;
    dispatch([&] {
        DoEvents();
        after = true;
    });
    EXPECT_FALSE(after);
    EXPECT_EQ(ending().status, 0);
}

TEST_F(Dispatch, AnEndInAMessageBoxUnwindsTheHandler) {
    fake::computer().answer = [](const fake::Message&) {
        dispatch([] { endAfterClosing(); });
        return int{Yes};
    };
    EXPECT_THROW(messageBox("text", OkOnly, "title"), Unwind);
}

TEST_F(Dispatch, TheMessageBoxReturnsTheButton) {
    fake::computer().answer = [](const fake::Message&) { return int{No}; };
    EXPECT_EQ(messageBox("text", YesNoInformation, "title"), No);
    EXPECT_EQ(messages()[0].text, "text");
    EXPECT_EQ(messages()[0].style, 68);
    EXPECT_EQ(messages()[0].title, "title");
}

class ClosingInTheMiddle : public MainWindow {
protected:
    void closeInPump(int number) {
        const int last = computer().pumps + number;
        computer().onPump = [this, last] {
            if (computer().pumps == last) close();
        };
    }
};

TEST_F(ClosingInTheMiddle, OfADownloadUnwindsItAndKeepsWhatIsOnTheStick) {
    startOnline();
    closeInPump(4); // capacity, firmware, channel list, capacity
    click(window().cmdChoose);
    EXPECT_TRUE(ended());
    EXPECT_EQ(status(), 0);
    EXPECT_FALSE(toolkit::ending().atOnce);
    EXPECT_EQ(computer().files.count("D:\\fw0.bin"), 1U);
    EXPECT_EQ(computer().files.count("D:\\list0-0.txt"), 1U);
    EXPECT_EQ(computer().files.count("D:\\autorun.inf"), 0U);
    EXPECT_EQ(computer().files.count("/opt/tool\\Settings.ini"), 1U) << "closing does all it does";
    EXPECT_EQ(program.MainWindow, nullptr);
}

TEST_F(ClosingInTheMiddle, OfTheDialogOfSticksUnwindsTheScan) {
    start();
    plugIn("E:\\");
    computer().onModal = [this](toolkit::Form&) { close(); };
    click(window().cmdSearch);
    EXPECT_TRUE(ended());
    EXPECT_EQ(status(), 0);
    EXPECT_EQ(program.Drive, nullptr);
}

TEST_F(ClosingInTheMiddle, OfAMessageBoxUnwindsItsHandler) {
    start();
    window().txtDT_Cap.setText("123456789012");
    computer().answer = [this](const fake::Message&) {
        close();
        return 1;
    };
    click(window().Command1);
    EXPECT_EQ(status(), 0);
    EXPECT_EQ(window().txtDT_Cap.selection().length, 0U) << "nothing of the handler runs any more";
}

TEST_F(ClosingInTheMiddle, NothingIsDeliveredAfterwards) {
    startOnline();
    close();
    computer().journal.clear();
    click(window().cmdChoose);
    click(window().cmdSearch);
    deviceArrives();
    tick();
    EXPECT_TRUE(computer().journal.empty());
    EXPECT_EQ(status(), 0);
}
