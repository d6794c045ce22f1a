// The one look at the update server.

#include "drive/device_monitor.h"
#include "main_window.h"

#include "online/server_addresses.h"
#include "platform/cTray.h"

using unit::errorReport;
using unit::MainWindow;
using unit::serverFile;
using unit::sponsorPage;
using unit::updatePage;
using Addresses = std::vector<std::string>;

class UpdateCheck : public MainWindow {
protected:
    static void serve(const std::string& name, const std::string& contents) {
        computer().web[serverFile(name)] = contents;
    }

    void check() {
        start();
        tick();
    }

    void expectOutdated() {
        ASSERT_EQ(computer().messages.size(), 1U);
        EXPECT_EQ(computer().messages[0].title, "Version abgelaufen.");
        EXPECT_TRUE(toolkit::ending().atOnce);
    }

    void expectNoConnection() {
        ASSERT_EQ(computer().messages.size(), 1U);
        EXPECT_EQ(computer().messages[0].title, "Verbindungs-Fehler");
        EXPECT_FALSE(ended());
    }

    toolkit::StatusPanel& panel() { return window().StatusBar1.panel(2); }
};

TEST_F(UpdateCheck, FetchesThreeFilesInOrderWithoutProgress) {
    check();
    EXPECT_EQ(computer().fetched, (Addresses{serverFile("usb-version.txt"), serverFile("usb-news.csv"),
                                             serverFile("usb-list.csv")}));
    EXPECT_EQ(computer().pumps, 0);
    EXPECT_TRUE(computer().messages.empty());
}

TEST_F(UpdateCheck, ShowsThatUpdatesAreLoaded) {
    check();
    EXPECT_EQ(panel().text(), "Updates geladen.");
    EXPECT_EQ(panel().toolTip(), "Updates wurden geladen.");
    EXPECT_TRUE(panel().enabled());
    EXPECT_EQ(window().cmdChoose.caption(), "Starte Update");
    EXPECT_TRUE(window().cmdChoose.enabled());
}

TEST_F(UpdateCheck, WithoutAStickTheButtonStaysDisabled) {
    pullOut("D:\\");
    check();
    EXPECT_EQ(window().cmdChoose.caption(), "Starte Update");
    EXPECT_FALSE(window().cmdChoose.enabled());
}

TEST_F(UpdateCheck, OfAStickThatIsGoneTheLetterIsLeftAndTheButtonStaysDisabled) {
    start();
    event([this] { window().chkAuto.setValue(1); });
    deviceGoes();
    ASSERT_EQ(window().lblLW.caption(), "D:\\");
    tick();
    EXPECT_EQ(window().cmdChoose.caption(), "Starte Update");
    EXPECT_FALSE(window().cmdChoose.enabled());
}

TEST_F(UpdateCheck, TheButtonIsDisabledWhileItRuns) {
    start();
    window().cmdChoose.setEnabled(true);
    bool enabled = true;
    computer().fails = [&](const std::string& operation) {
        if (operation.starts_with("fetch ")) enabled = window().cmdChoose.enabled();
        return false;
    };
    tick();
    EXPECT_FALSE(enabled);
}

TEST_F(UpdateCheck, TheButtonSaysWhyItIsDisabled) {
    start();
    EXPECT_NE(window().cmdChoose.toolTip().find("gesucht"), std::string::npos);
    tick();
    EXPECT_EQ(window().cmdChoose.toolTip(), "") << "it is enabled";
    event([this] { drive::deviceRemoved(drive()); });
    EXPECT_EQ(window().cmdChoose.toolTip(), "Kein USB-Stick gefunden. Schließen Sie den USB-Stick am PC an.");
}

TEST_F(UpdateCheck, WithoutAStickTheButtonSaysSoAfterTheCheck) {
    pullOut("D:\\");
    check();
    EXPECT_FALSE(window().cmdChoose.enabled());
    EXPECT_EQ(window().cmdChoose.toolTip(), window().StatusBar1.panel(1).toolTip());
}

TEST_F(UpdateCheck, WithoutAConnectionTheButtonSaysSo) {
    computer().web.clear();
    check();
    EXPECT_FALSE(window().cmdChoose.enabled());
    EXPECT_NE(window().cmdChoose.toolTip().find("Internetanschluss"), std::string::npos);
}

TEST_F(UpdateCheck, ShowsTheFourNewsFields) {
    check();
    const char* const fields[] = {"one", "two", "three", "four"};
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(window().lbl_news[i].caption(), fields[i]);
}

TEST_F(UpdateCheck, FurtherNewsFieldsAndLinesAreIgnored) {
    serve("usb-news.csv", "a;b;;d;e\r\nf;g;h;i");
    check();
    const char* const fields[] = {"a", "b", "", "d"};
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(window().lbl_news[i].caption(), fields[i]);
}

TEST_F(UpdateCheck, NewsAreInTheAnsiCodePage) {
    serve("usb-news.csv", "Gr\xFC\xDF"
                          "e;2 \x80;c;d");
    check();
    EXPECT_EQ(window().lbl_news[0].caption(), "Grüße");
    EXPECT_EQ(window().lbl_news[1].caption(), "2 €");
}

TEST_F(UpdateCheck, TooFewNewsFieldsAreTheEnd) {
    for (const char* news : {"a;b;c", "a", "\r\na;b;c;d"}) {
        SCOPED_TRACE(news);
        toolkit::resetEnding();
        computer().messages.clear();
        serve("usb-news.csv", news);
        check();
        ASSERT_EQ(computer().messages.size(), 1U);
        EXPECT_TRUE(computer().messages[0].text.starts_with("Laufzeitfehler '9':"));
        EXPECT_EQ(status(), 1);
        program.Tray.reset();
    }
}

TEST_F(UpdateCheck, MissingNewsAreTheEnd) {
    computer().web.erase(serverFile("usb-news.csv"));
    check();
    ASSERT_EQ(computer().messages.size(), 1U);
    EXPECT_TRUE(computer().messages[0].text.starts_with("Laufzeitfehler '9':"));
    EXPECT_EQ(status(), 1);
}

TEST_F(UpdateCheck, AnotherVersionIsRefused) {
    serve("usb-version.txt", "99.9");
    start();
    const auto files = computer().files.size();
    tick();
    ASSERT_EQ(computer().messages.size(), 1U);
    EXPECT_EQ(computer().messages[0].text, "Eine neue Version des Programmes ist verfügbar!\r\n\r\n"
                                           "Installieren Sie die akutelle Version des Programmes.\r\n"
                                           "Die Updateseite wird automatisch geöffnet.");
    EXPECT_EQ(computer().messages[0].style, 16);
    EXPECT_EQ(computer().messages[0].title, "Version abgelaufen.");
    ASSERT_EQ(computer().shellCalls.size(), 1U);
    const fake::ShellCall& call = computer().shellCalls[0];
    EXPECT_EQ(call.owner, 0);
    EXPECT_EQ(call.verb, "open");
    EXPECT_EQ(call.file, updatePage());
    EXPECT_EQ(call.parameters, "0");
    EXPECT_EQ(call.directory, "0");
    EXPECT_EQ(call.showCommand, 1);
    EXPECT_EQ(computer().fetched.size(), 1U);
    EXPECT_EQ(computer().files.size(), files) << "no settings are saved";
    EXPECT_NE(program.Tray, nullptr) << "nothing is released";
    EXPECT_EQ(toolkit::ending().status, 0);
    EXPECT_TRUE(toolkit::ending().atOnce);
    EXPECT_EQ(panel().text(), "Suche nach Updates...");
    EXPECT_EQ(window().cmdChoose.caption(), "Suche Updates...");
}

TEST_F(UpdateCheck, TheUpdatePageIsOpenedAfterTheMessageAndWithoutAChooser) {
    serve("usb-version.txt", "99.9");
    computer().shellCodes[updatePage()] = 31;
    start();
    computer().journal.clear();
    tick();
    EXPECT_EQ(computer().journal.back(), "open " + updatePage());
    EXPECT_EQ(computer().journal[computer().journal.size() - 2], "message Version abgelaufen.");
    EXPECT_TRUE(computer().choosers.empty());
    EXPECT_TRUE(toolkit::ending().atOnce);
}

TEST_F(UpdateCheck, AnyDifferenceIsAnotherVersion) {
    const std::string own(base::programVersion);
    std::string withComma = own;
    withComma.replace(own.find('.'), 1, ",");
    for (const std::string& version : {own + "\r\n", own + "0", " " + own, withComma, std::string("1.4"),
                                       std::string("<html>404</html>")}) {
        SCOPED_TRACE(version);
        toolkit::resetEnding();
        computer().messages.clear();
        serve("usb-version.txt", version);
        check();
        expectOutdated();
        program.Tray.reset();
    }
}

TEST_F(UpdateCheck, NoConnectionIsReportedAndTheRestKeepsWorking) {
    computer().web.clear();
    check();
    ASSERT_EQ(computer().messages.size(), 1U);
    EXPECT_EQ(computer().messages[0].text,
              "Es konnte keine Internet-Verbindung hergestellt werden!\r\n\r\n"
              "Die Internet Updatefunktion kann nicht verwendet werden!\r\n"
              "Prüfen Sie Ihren Internetanschluss und starten Sie das Programm später nochmal.");
    EXPECT_EQ(computer().messages[0].style, 16);
    EXPECT_EQ(computer().messages[0].title, "Verbindungs-Fehler");
    EXPECT_EQ(panel().text(), "Keine Internetverbindung");
    EXPECT_EQ(panel().toolTip(), "Überprüfen Sie Ihren Internetanschluss.");
    EXPECT_TRUE(panel().enabled());
    EXPECT_EQ(window().cmdChoose.caption(), "Keine Verbindung");
    EXPECT_FALSE(window().cmdChoose.enabled());
    EXPECT_EQ(computer().fetched.size(), 1U);
    EXPECT_FALSE(window().Timer1.enabled());
    for (std::size_t i = 0; i < 9; ++i)
        EXPECT_FALSE(window().Firm_Option[i].enabled());
    click(window().cmdSearch);
    EXPECT_FALSE(ended());
}

TEST_F(UpdateCheck, NoConnectionIsShownAlsoWhenAStickComesWhileTheBoxIsUp) {
    computer().web.clear();
    pullOut("D:\\");
    start();
    event([this] { window().chkAuto.setValue(1); });
    bool shown = false;
    computer().answer = [&](const fake::Message&) {
        plugIn("D:\\");
        deviceArrives();
        shown = window().cmdChoose.enabled() && window().cmdChoose.caption() == "Starte Update";
        return 1;
    };
    tick();
    EXPECT_TRUE(shown);
    EXPECT_EQ(window().lblLW.caption(), "D:\\");
    EXPECT_EQ(panel().text(), "Keine Internetverbindung");
    EXPECT_EQ(window().cmdChoose.caption(), "Keine Verbindung");
    EXPECT_FALSE(window().cmdChoose.enabled());
}

TEST_F(UpdateCheck, AnEmptyVersionFileIsNoConnection) {
    serve("usb-version.txt", "");
    check();
    expectNoConnection();
}

TEST_F(UpdateCheck, ACutAnswerIsNoConnection) {
    for (const char* name : {"usb-version.txt", "usb-news.csv", "usb-list.csv"}) {
        SCOPED_TRACE(name);
        toolkit::resetEnding();
        computer().messages.clear();
        program.Tray.reset();
        computer().fails = [&, reads = 0](const std::string& operation) mutable {
            return operation == "read " + serverFile(name) && ++reads == 2;
        };
        check();
        expectNoConnection();
        EXPECT_EQ(panel().text(), "Keine Internetverbindung");
        EXPECT_EQ(window().cmdChoose.caption(), "Keine Verbindung");
        EXPECT_FALSE(window().cmdChoose.enabled());
        EXPECT_EQ(window().SelectedFirmware, -1);
    }
}

class ServerAddresses : public MainWindow {
protected:
    static void serverIni(const std::string& lines) {
        putFile("/opt/tool\\Server.ini", lines);
        online::loadServerAddresses();
    }
};

TEST_F(ServerAddresses, AreReadOnceAtTheStart) {
    putFile("/opt/tool\\Server.ini", "[Server]\r\nUpdate=http://first.test\r\n");
    start();
    computer().files.erase("/opt/tool\\Server.ini");
    tick();
    EXPECT_EQ(computer().fetched.at(0), "http://first.test/orvanta/download/usb-version.txt");
}

TEST_F(ServerAddresses, AFileThatCannotBeReadEndsTheStart) {
    putFile("/opt/tool\\Server.ini", "[Server]\r\nUpdate=http://first.test\r\n");
    computer().failure = platform::FileResult::DeviceIo;
    computer().fails = [](const std::string& operation) { return operation.ends_with("Server.ini"); };
    start();
    ASSERT_EQ(computer().messages.size(), 1U);
    EXPECT_EQ(computer().messages[0].text, errorReport(base::ErrorNumber::DeviceIo, "/opt/tool\\Server.ini",
                                                       base::advice(base::ErrorNumber::FileNotFound)))
        << "it is no stick that is at fault";
    EXPECT_EQ(status(), 1);
    EXPECT_EQ(program.Tray, nullptr) << "nothing has begun";
}

TEST_F(ServerAddresses, HaveDefaults) {
    online::loadServerAddresses();
    EXPECT_EQ(online::downloadUrl(), serverFile(""));
    EXPECT_EQ(online::updatePageUrl(), updatePage());
    EXPECT_EQ(online::sponsorPageUrl(), sponsorPage());
}

TEST_F(ServerAddresses, ComeFromTheFileBesideTheProgram) {
    serverIni("[Server]\r\nUpdate=http://127.0.0.1:8080\r\nUpdatePage=page.test\r\nWebHost=web.test\r\n");
    EXPECT_EQ(online::downloadUrl(), "http://127.0.0.1:8080/orvanta/download/");
    EXPECT_EQ(online::updatePageUrl(), "http://page.test");
    EXPECT_EQ(online::sponsorPageUrl(), "http://web.test/index_link.php?ref=usbtool");
    EXPECT_EQ(online::serverAddresses().WebHost, "web.test");
}

TEST_F(ServerAddresses, WhatTheFileDoesNotNameIsTheDefault) {
    serverIni("[Server]\r\nother\r\nUpdate=\r\nWebHost=web.test/\r\n[Other]\r\nUpdatePage=x\r\n");
    EXPECT_EQ(online::downloadUrl(), serverFile(""));
    EXPECT_EQ(online::updatePageUrl(), updatePage());
    EXPECT_EQ(online::sponsorPageUrl(), "http://web.test/index_link.php?ref=usbtool");
}

TEST_F(ServerAddresses, KeysMatchRegardlessOfCaseAndTheFirstCounts) {
    serverIni("[Server]\r\nUPDATE=http://first.test\r\nUpdate=http://second.test\r\nwebhost=web.test\r\n");
    EXPECT_EQ(online::downloadUrl(), "http://first.test/orvanta/download/");
    EXPECT_EQ(online::serverAddresses().WebHost, "web.test");
}
