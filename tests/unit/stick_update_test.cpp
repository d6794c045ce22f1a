// The job: texts, order, and what it leaves on the stick.

#include "main_window.h"

#include "build_choices.h"

#include <algorithm>
#include <functional>

using base::ErrorNumber;
using unit::errorReport;
using unit::GB;
using unit::MainWindow;
using unit::MB;
using unit::serverFile;
using unit::sponsorPage;
using Texts = std::vector<std::string>;

namespace {

const std::string noCatalogAdvice = "Es sind keine Angaben vom Server da. Prüfen Sie Ihren "
                                    "Internetanschluss, starten Sie das Programm neu, und "
                                    "warten Sie, bis \"Updates geladen.\" angezeigt wird.";

} // namespace

class StickUpdate : public MainWindow {
protected:
    StickUpdate() { startOnline(); }

    void update() { click(window().cmdChoose); }

    /// What was done, without the single reads.
    static Texts steps() {
        Texts all = computer().journal;
        std::erase_if(all, [](const std::string& step) { return step.starts_with("read "); });
        return all;
    }
    static const fake::Message& box(std::size_t number) { return computer().messages.at(number); }
    static std::string onStick(const std::string& name) {
        const auto found = computer().files.find("D:\\" + name);
        return found == computer().files.end() ? "(missing)" : found->second.contents;
    }
    static void free(std::uint64_t bytes) { computer().drives["D:\\"].free = bytes; }

    void expectReport(ErrorNumber number, const std::string& subject, const std::string& advice = {}) {
        ASSERT_FALSE(computer().messages.empty());
        EXPECT_EQ(computer().messages.back().text, errorReport(number, subject, advice));
        EXPECT_EQ(status(), 1);
    }
};

TEST_F(StickUpdate, GoesInOrder) {
    update();
    EXPECT_EQ(steps(), (Texts{"pump",
                              "message Wollen Sie updaten ?",
                              "fetch " + serverFile("usb-list.csv"),
                              "fetch " + serverFile("fw0.bin.txt"),
                              "pump",
                              "write D:\\fw0.bin",
                              "fetch " + serverFile("list0-0.txt.txt"),
                              "pump",
                              "write D:\\list0-0.txt",
                              "pump",
                              "load /opt/tool\\autorun.inf",
                              "copy D:\\autorun.inf",
                              "load /opt/tool\\autorun.inf",
                              "load /opt/tool\\orvantastick.ico",
                              "copy D:\\orvantastick.ico",
                              "load /opt/tool\\orvantastick.ico",
                              "compare D:\\fw0.bin",
                              "compare D:\\list0-0.txt",
                              "compare D:\\autorun.inf",
                              "compare D:\\orvantastick.ico",
                              "settle D:\\",
                              "message Update erfolgreich",
                              "open " + sponsorPage()}));
    EXPECT_FALSE(ended());
}

TEST_F(StickUpdate, LeavesFourFilesOnTheStick) {
    const auto before = computer().files.size();
    update();
    EXPECT_EQ(onStick("fw0.bin"), "firmware fw0.bin");
    EXPECT_EQ(onStick("list0-0.txt"), "channels list0-0.txt");
    EXPECT_EQ(onStick("autorun.inf"), "[autorun]\r\n");
    EXPECT_EQ(onStick("orvantastick.ico"), "icon");
    EXPECT_EQ(computer().files.size(), before + 4);
}

TEST_F(StickUpdate, AsksWithTheChoice) {
    click(window().Firm_Option[3]);
    click(window().Sett_Option[1]);
    update();
    EXPECT_EQ(box(0).text, "Sie haben folgende Update Optionen gewählt:\r\nReceiver: Orvanta Receiver 3\r\n"
                           "Settings: Deutschland - Programmierung\r\n\r\nUpdaten mit OK ?");
    EXPECT_EQ(box(0).style, 1);
    EXPECT_EQ(box(0).title, "Wollen Sie updaten ?");
    EXPECT_EQ(onStick("fw3.bin"), "firmware fw3.bin");
    EXPECT_EQ(onStick("list3-1.txt"), "channels list3-1.txt");
}

TEST_F(StickUpdate, ReportsSuccessWithTheSponsor) {
    update();
    ASSERT_EQ(computer().messages.size(), 2U);
    EXPECT_EQ(box(1).text,
              "Update abgeschlossen\r\n\r\nDieser Service wird KOSTENLOS zur Verfügung gestellt von\r\n"
              "BRELLIX AUSTRIA - " +
                  std::string(base::webHost) + "\r\n\r\n");
    EXPECT_EQ(box(1).style, 0);
    EXPECT_EQ(box(1).title, "Update erfolgreich");
    ASSERT_EQ(computer().shellCalls.size(), 1U);
    EXPECT_EQ(computer().shellCalls[0].verb, "open");
    EXPECT_EQ(computer().shellCalls[0].file, sponsorPage());
    const toolkit::StatusPanel& panel = window().StatusBar1.panel(2);
    EXPECT_EQ(panel.text(), "Update abgeschlossen");
    EXPECT_EQ(panel.toolTip(), "Update abgeschlossen.");
    EXPECT_TRUE(panel.enabled());
}

TEST_F(StickUpdate, CancelDoesNothing) {
    computer().answer = [](const fake::Message&) { return 2; };
    update();
    EXPECT_EQ(steps(), (Texts{"pump", "message Wollen Sie updaten ?"}));
    EXPECT_EQ(window().StatusBar1.panel(2).text(), "Updates geladen.");
}

TEST_F(StickUpdate, TheCapacityIsShownAnewBeforeAndAfter) {
    free(2 * GB);
    Texts shown;
    computer().onPump = [&] {
        shown.push_back(window().lblHDFree.caption());
        free(GB);
    };
    update();
    EXPECT_EQ(shown.front(), "2048,00");
    EXPECT_EQ(shown.back(), "1024,00");
}

TEST_F(StickUpdate, FiveFreeUnitsAreEnough) {
    free(5 * MB);
    update();
    EXPECT_EQ(box(0).title, "Wollen Sie updaten ?");
}

TEST_F(StickUpdate, LessThanFiveAreRefused) {
    free(5 * MB - 10486); // 4.99 MB
    update();
    EXPECT_EQ(window().lblHDFree.caption(), "4,99");
    ASSERT_EQ(computer().messages.size(), 1U);
    EXPECT_EQ(box(0).text, "Sie benötigen mindestens 5 MB freien Speicherplatz am USB-Stick!\r\n"
                           "Löschen Sie unbenötigte Daten und versuchen Sie es nochmal.");
    EXPECT_EQ(box(0).style, 16);
    EXPECT_EQ(box(0).title, "Zuwenig Speicher verfügbar !");
    EXPECT_TRUE(computer().fetched.empty());
    EXPECT_TRUE(computer().writes.empty());
}

TEST_F(StickUpdate, AFileThatTheStickCannotHoldIsNotWritten) {
    free(6 * MB);
    computer().web[serverFile("fw0.bin.txt")] = std::string(6 * MB + 1, 'x');
    update();
    expectReport(ErrorNumber::DiskFull, "D:\\fw0.bin");
    EXPECT_TRUE(computer().writes.empty());
}

TEST_F(StickUpdate, AFileMayFillTheStick) {
    free(6 * MB);
    computer().web[serverFile("fw0.bin.txt")] = std::string(6 * MB, 'x');
    update();
    EXPECT_EQ(onStick("fw0.bin").size(), 6 * MB);
}

TEST_F(StickUpdate, TheFileThatIsReplacedMakesRoom) {
    free(6 * MB);
    putFile("D:\\fw0.bin", std::string(1000, 'o'));
    computer().web[serverFile("fw0.bin.txt")] = std::string(6 * MB + 1000, 'x');
    update();
    EXPECT_EQ(onStick("fw0.bin").size(), 6 * MB + 1000);
}

TEST_F(StickUpdate, NoFileHasFourGigabytes) {
    plugIn("D:\\", 64 * GB, 60 * GB);
    computer().fails = [](const std::string& operation) {
        if (operation == "fetch " + serverFile("fw0.bin.txt")) computer().announcedLength = 4 * GB;
        return false;
    };
    update();
    expectReport(ErrorNumber::DiskFull, "D:\\fw0.bin");
    EXPECT_TRUE(computer().writes.empty());
}

TEST_F(StickUpdate, WhatIsShownDecidesNotTheBytes) {
    free(5 * MB - 1);
    update();
    EXPECT_EQ(window().lblHDFree.caption(), "5,00");
    EXPECT_EQ(box(0).title, "Wollen Sie updaten ?");
}

TEST_F(StickUpdate, InGigabytesFiveOfThemAreDemanded) {
    event([this] { window().cmbSize.choose(1); });
    update();
    EXPECT_EQ(window().lblHDFree.caption(), "3,000");
    ASSERT_EQ(computer().messages.size(), 1U);
    EXPECT_EQ(box(0).title, "Zuwenig Speicher verfügbar !");
    plugIn("D:\\", 16 * GB, 5 * GB);
    update();
    EXPECT_EQ(box(1).title, "Wollen Sie updaten ?");
}

TEST_F(StickUpdate, TheFigureIsReadWithTheUsersSeparator) {
    computer().separator = ".";
    free(6 * MB + MB / 2);
    update();
    EXPECT_EQ(window().lblHDFree.caption(), "6.50");
    EXPECT_EQ(box(0).title, "Wollen Sie updaten ?");
}

TEST_F(StickUpdate, AStickThatIsGoneIsShownToBeGone) {
    pullOut("D:\\");
    update();
    EXPECT_TRUE(computer().messages.empty());
    EXPECT_FALSE(ended());
    EXPECT_EQ(window().StatusBar1.panel(1).text(), "No Stick");
    EXPECT_EQ(window().cmdChoose.caption(), "USB Stick einstecken");
    EXPECT_FALSE(window().cmdChoose.enabled());
    EXPECT_TRUE(computer().fetched.empty());
}

TEST_F(StickUpdate, WithoutAConnectionNothingIsWritten) {
    computer().web.clear();
    update();
    ASSERT_EQ(computer().messages.size(), 2U);
    EXPECT_EQ(box(1).text, "Es konnte keine Verbindung hergestellt werden!\r\n"
                           "Prüfen Sie Ihre Internetverbindung oder versuchen es später nochmal.");
    EXPECT_EQ(box(1).style, 16);
    EXPECT_EQ(box(1).title, "Verbindungs-Fehler");
    EXPECT_EQ(computer().fetched, Texts{serverFile("usb-list.csv")});
    EXPECT_TRUE(computer().writes.empty());
    EXPECT_FALSE(ended());
}

TEST_F(StickUpdate, TheCatalogIsFetchedForTheTestOnly) {
    computer().web[serverFile("usb-list.csv")] = "anything";
    update();
    EXPECT_EQ(onStick("fw0.bin"), "firmware fw0.bin");
    EXPECT_EQ(window().Receivers.FirmwareFile[0], "fw0.bin");
}

TEST_F(StickUpdate, WithoutAChannelListThreeFilesAreWritten) {
    window().SelectedSettings = -1;
    update();
    EXPECT_EQ(box(0).text, "Sie haben folgende Update Optionen gewählt:\r\nReceiver: Orvanta Receiver 0\r\n"
                           "Settings: Auswahl nicht verfügbar\r\n\r\nUpdaten mit OK ?");
    EXPECT_EQ(computer().writes, (Texts{"D:\\fw0.bin", "D:\\autorun.inf", "D:\\orvantastick.ico"}));
    EXPECT_EQ(computer().fetched, (Texts{serverFile("usb-list.csv"), serverFile("fw0.bin.txt")}));
}

TEST_F(StickUpdate, AFailedDownloadIsAnEmptyFileAndStillSuccess) {
    computer().web.erase(serverFile("fw0.bin.txt"));
    computer().web.erase(serverFile("list0-0.txt.txt"));
    update();
    EXPECT_EQ(onStick("fw0.bin"), "");
    EXPECT_EQ(onStick("list0-0.txt"), "");
    EXPECT_EQ(box(1).title, "Update erfolgreich");
}

TEST_F(StickUpdate, EveryByteReachesTheStickUnchanged) {
    std::string bytes;
    for (int i = 0; i < 10000; ++i)
        bytes += static_cast<char>(i * 7 % 256);
    computer().web[serverFile("fw0.bin.txt")] = bytes;
    update();
    EXPECT_EQ(onStick("fw0.bin"), bytes);
}

TEST_F(StickUpdate, IdenticalFilesAreNotWrittenAgainButCopiesAre) {
    update();
    computer().writes.clear();
    update();
    EXPECT_EQ(computer().writes, (Texts{"D:\\autorun.inf", "D:\\orvantastick.ico"}));
}

TEST_F(StickUpdate, AStickThatHasEverythingIsReadOnceAndNotWritten) {
    update();
    computer().sparesCopies = true;
    computer().writes.clear();
    computer().journal.clear();
    update();
    EXPECT_TRUE(computer().writes.empty());
    Texts compared = steps();
    std::erase_if(compared, [](const std::string& step) { return !step.starts_with("compare "); });
    EXPECT_EQ(compared, (Texts{"compare D:\\fw0.bin", "compare D:\\list0-0.txt"}));
    EXPECT_EQ(computer().messages.back().title, "Update erfolgreich");
    EXPECT_EQ(window().prgUpdate.text(), "Geprüft: 4 Dateien stimmen überein.");
}

TEST_F(StickUpdate, WhatWasFoundBeforeAWriteIsReadBack) {
    update();
    computer().sparesCopies = true;
    computer().web[serverFile("list0-0.txt.txt")] = "channels list1-1.txt"; // as long as the old one
    computer().journal.clear();
    update();
    const Texts all = steps();
    const auto written = std::find(all.begin(), all.end(), "write D:\\list0-0.txt");
    ASSERT_NE(written, all.end());
    Texts compared(written, all.end());
    std::erase_if(compared, [](const std::string& step) { return !step.starts_with("compare "); });
    EXPECT_EQ(compared, (Texts{"compare D:\\fw0.bin", "compare D:\\list0-0.txt"}))
        << "the copies were found there after it";
}

TEST_F(StickUpdate, OldFilesAreReplaced) {
    putFile("D:\\autorun.inf", "another");
    putFile("D:\\fw0.bin", "old firmware that is longer than the new one");
    putFile("D:\\other.txt", "mine");
    update();
    EXPECT_EQ(onStick("autorun.inf"), "[autorun]\r\n");
    EXPECT_EQ(onStick("fw0.bin"), "firmware fw0.bin");
    EXPECT_EQ(onStick("other.txt"), "mine");
}

TEST_F(StickUpdate, ProgressIsShownByKindOfFile) {
    computer().web[serverFile("fw0.bin.txt")] = std::string(21 * 2048, 'x');
    Texts shown;
    computer().onPump = [&] { shown.push_back(window().StatusBar1.panel(2).text()); };
    update();
    EXPECT_EQ(shown[20], "Firmware-Update .");
    EXPECT_EQ(shown[21], "Firmware-Update ..");
    EXPECT_EQ(shown[22], "Settings-Update .");
    EXPECT_EQ(shown[23], "Update abgeschlossen");
}

TEST_F(StickUpdate, NothingIsDoneWhenTheSponsorPageCannotBeOpened) {
    computer().shellCodes[sponsorPage()] = 31;
    update();
    EXPECT_TRUE(computer().choosers.empty());
    EXPECT_EQ(computer().messages.size(), 2U);
}

TEST_F(StickUpdate, WithoutAReceiverItIsAnError) {
    window().SelectedFirmware = -1;
    update();
    expectReport(ErrorNumber::SubscriptOutOfRange, "", noCatalogAdvice);
    EXPECT_EQ(computer().messages.size(), 1U) << "it is not even asked";
}

TEST_F(StickUpdate, TheSpaceIsLookedAtBeforeTheReceiver) {
    window().SelectedFirmware = -1;
    free(4 * MB);
    update();
    ASSERT_EQ(computer().messages.size(), 1U);
    EXPECT_EQ(box(0).title, "Zuwenig Speicher verfügbar !");
    EXPECT_FALSE(ended());
}

TEST_F(StickUpdate, AChannelListOutOfBoundsIsAnError) {
    window().SelectedSettings = 5;
    update();
    expectReport(ErrorNumber::SubscriptOutOfRange, "", noCatalogAdvice);
    EXPECT_TRUE(computer().writes.empty());
}

TEST_F(StickUpdate, WhatWasConfirmedIsWrittenWhateverIsClickedMeanwhile) {
    const auto choose = [this] {
        click(window().Firm_Option[4]);
        click(window().Sett_Option[2]);
    };
    computer().answer = [&](const fake::Message& message) {
        if (message.title == "Wollen Sie updaten ?") choose();
        return 1;
    };
    update();
    EXPECT_EQ(onStick("fw0.bin"), "firmware fw0.bin");
    EXPECT_EQ(onStick("list0-0.txt"), "channels list0-0.txt");
    EXPECT_EQ(onStick("fw4.bin"), "(missing)");
}

/// Does it while the question is open; the answer is OK.
void whileAsked(const std::function<void()>& happening) {
    fake::computer().answer = [happening](const fake::Message& message) {
        if (message.title == "Wollen Sie updaten ?") happening();
        return 1;
    };
}

TEST_F(StickUpdate, AnotherStickInItsPlaceIsNotReady) {
    whileAsked([] { computer().drives["D:\\"].medium = "another"; });
    update();
    expectReport(ErrorNumber::DiskNotReady, "D:\\");
    EXPECT_TRUE(computer().fetched.empty());
    EXPECT_TRUE(computer().writes.empty());
}

TEST_F(StickUpdate, AnotherStickInItsPlaceBeforeTheClickIsNotReady) {
    computer().drives["D:\\"].medium = "another";
    update();
    expectReport(ErrorNumber::DiskNotReady, "D:\\");
    EXPECT_TRUE(computer().writes.empty());
}

TEST_F(StickUpdate, TheStickThatIsShownAtTheAnswerIsWritten) {
    event([this] { window().chkAuto.setValue(1); });
    whileAsked([] {
        pullOut("D:\\");
        deviceGoes();
        plugIn("E:\\");
        deviceArrives();
    });
    update();
    EXPECT_EQ(box(1).title, "Update erfolgreich");
    EXPECT_EQ(computer().writes,
              (Texts{"E:\\fw0.bin", "E:\\list0-0.txt", "E:\\autorun.inf", "E:\\orvantastick.ico"}));
    EXPECT_EQ(computer().settled, Texts{"E:\\"});
}

TEST_F(StickUpdate, NoStickThatIsShownAtTheAnswerIsNotReady) {
    event([this] { window().chkAuto.setValue(1); });
    whileAsked([] { deviceGoes(); });
    update();
    expectReport(ErrorNumber::DiskNotReady, "D:\\");
    EXPECT_TRUE(computer().writes.empty());
}

TEST_F(StickUpdate, ANameThatMayNotBeWrittenIsAnErrorBeforeAnythingIsFetched) {
    window().Receivers.FirmwareFile[0] = "Autorun.inf";
    update();
    expectReport(ErrorNumber::PathFileAccess, "Autorun.inf");
    EXPECT_EQ(box(0).title, "Wollen Sie updaten ?");
    EXPECT_TRUE(computer().fetched.empty());
    EXPECT_TRUE(computer().writes.empty());
}

TEST_F(StickUpdate, TheChannelListsNameIsLookedAtBeforeTheFirmwareIsFetched) {
    window().Receivers.SettingsFile[0] = "sub/list.txt";
    update();
    expectReport(ErrorNumber::PathFileAccess, "sub/list.txt");
    EXPECT_TRUE(computer().fetched.empty());
}

TEST_F(StickUpdate, AReadOnlySourceMakesNoReadOnlyCopy) {
    for (const char* name : {"autorun.inf", "orvantastick.ico"})
        computer().files["/opt/tool\\" + std::string(name)].attributes |= platform::FileReadOnly;
    update();
    EXPECT_EQ(computer().files["D:\\autorun.inf"].attributes, platform::FileArchive);
}

class StickUpdateOffline : public MainWindow {};

TEST_F(StickUpdateOffline, IsOfferedWithAStickAndEndsInAnError) {
    computer().web.clear();
    startOnline();
    click(window().cmdSearch);
    ASSERT_TRUE(window().cmdChoose.enabled());
    computer().messages.clear();
    click(window().cmdChoose);
    ASSERT_EQ(computer().messages.size(), 1U);
    EXPECT_EQ(computer().messages[0].text,
              errorReport(ErrorNumber::SubscriptOutOfRange, {}, noCatalogAdvice));
    EXPECT_EQ(status(), 1);
}
