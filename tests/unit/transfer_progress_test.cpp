// What the progress bar says while a file comes, by the clock.

#include "main_window.h"
#include "recording_view.h"

#include "online/download.h"
#include "online/transfer_progress.h"
#include "toolkit/clock.h"

#include <algorithm>

using toolkit::ProgressBar;
using toolkit::ProgressState;
using unit::MainWindow;
using unit::MB;
using namespace std::chrono_literals;

TEST(ProgressBarControl, TellsItsViewOfChangesOnly) {
    ProgressBar bar("prg");
    unit::RecordingView view;
    bar.attach(&view);
    using toolkit::Property;
    bar.showShare(0.5, "a");
    bar.showShare(0.5, "a");
    EXPECT_EQ(view.shown, (std::vector{Property::Value, Property::Text}));
    bar.setText("b");
    bar.alert();
    bar.clear();
    bar.clear();
    EXPECT_EQ(view.shown, (std::vector{Property::Value, Property::Text, Property::Text, Property::Alert,
                                       Property::Value, Property::Text}));
}

TEST(ProgressBarControl, HasAShareFromNoneToAll) {
    ProgressBar bar("prg");
    EXPECT_EQ(bar.state(), ProgressState::None);
    bar.showShare(-1, "");
    EXPECT_EQ(bar.share(), 0);
    bar.showShare(2, "");
    EXPECT_EQ(bar.share(), 1);
    EXPECT_EQ(bar.state(), ProgressState::KnownShare);
    bar.showBusy("x");
    EXPECT_EQ(bar.state(), ProgressState::UnknownShare);
    bar.showText("y");
    EXPECT_EQ(bar.state(), ProgressState::None);
    EXPECT_EQ(bar.text(), "y");
}

/// A file that comes at an even speed; each look at the clock takes the pause between two reads.
class TransferText : public MainWindow {
protected:
    TransferText() { start(); }

    ProgressBar& bar() { return window().prgUpdate; }

    /// So much has come since the last time.
    void advance(online::TransferProgress& progress, std::chrono::milliseconds time) {
        computer().clockStep = time;
        ASSERT_TRUE(progress.isDue());
        computer().clockStep = 0ms;
    }
};

TEST_F(TransferText, OfASmallFileIsInKilobytes) {
    online::TransferProgress progress(bar(), "Settings");
    advance(progress, 1ms);
    progress.received(2048, 20000);
    EXPECT_EQ(bar().text(), "Settings 10 % (2,0 von 19,5 KB)");
    EXPECT_EQ(online::amount(0, 5000), "0,0 von 4,9 KB");
    EXPECT_EQ(online::amount(MB - 1, MB), "1,0 von 1,0 MB");
}

TEST_F(TransferText, NamesShareAmountAndTime) {
    online::TransferProgress progress(bar(), "Firmware");
    EXPECT_EQ(bar().text(), "Firmware …");
    EXPECT_EQ(bar().state(), ProgressState::UnknownShare);
    advance(progress, 1ms);
    progress.received(0, 40 * MB);
    EXPECT_EQ(bar().text(), "Firmware 0 % (0,0 von 40,0 MB)");
    advance(progress, 1800ms);
    progress.received(MB * 18 / 10, 40 * MB);
    EXPECT_EQ(bar().text(), "Firmware 4 % (1,8 von 40,0 MB)");
    advance(progress, 10000ms);
    progress.received(MB * 118 / 10, 40 * MB);
    EXPECT_EQ(bar().state(), ProgressState::KnownShare);
    EXPECT_NEAR(bar().share(), 0.295, 0.0001);
    EXPECT_EQ(bar().text(), "Firmware 29 % (11,8 von 40,0 MB, noch etwa 30 s)");
}

TEST_F(TransferText, PromisesNoTimeBeforeItIsKnown) {
    online::TransferProgress progress(bar(), "Settings");
    for (int tenth = 0; tenth <= 32; ++tenth) {
        advance(progress, 100ms);
        progress.received(static_cast<std::uint64_t>(tenth) * MB / 10, 100 * MB);
        EXPECT_EQ(bar().text().find("noch etwa") != std::string::npos, tenth >= 30) << bar().text();
    }
    EXPECT_EQ(bar().text(), "Settings 3 % (3,2 von 100,0 MB, noch etwa 2 min)");
}

TEST_F(TransferText, TellsTheTimeInStepsByTheSpeedOfTheLastSeconds) {
    online::TransferProgress progress(bar(), "Firmware");
    std::uint64_t bytes = 0;
    const auto run = [&](int seconds, std::uint64_t speed) {
        for (int i = 0; i < seconds; ++i) {
            bytes += speed;
            advance(progress, 1000ms);
            progress.received(bytes, 4096 * MB);
        }
    };
    run(1, 400 * MB); // from a buffer on the way
    bytes = 0;
    run(20, 4 * MB);
    EXPECT_EQ(bar().text(), "Firmware 1 % (80,0 von 4096,0 MB, noch etwa 17 min)");
    run(10, 1 * MB);
    EXPECT_EQ(bar().text(), "Firmware 2 % (90,0 von 4096,0 MB, noch etwa 2 h)");
    run(10, 396 * MB);
    EXPECT_EQ(bar().text(), "Firmware 98 % (4050,0 von 4096,0 MB, noch etwa 5 s)");
    run(1, 46 * MB);
    EXPECT_EQ(bar().text(), "Firmware 100 % (4096,0 von 4096,0 MB)");
}

TEST_F(TransferText, NobodyKnowsWhenNothingComes) {
    online::TransferProgress progress(bar(), "Firmware");
    for (int i = 0; i < 20; ++i) {
        advance(progress, 1000ms);
        progress.received(MB, 4 * MB);
    }
    EXPECT_EQ(bar().text(), "Firmware 25 % (1,0 von 4,0 MB)");
}

TEST_F(TransferText, WithoutALengthThereIsTheAmountAlone) {
    online::TransferProgress progress(bar(), "Firmware");
    advance(progress, 1ms);
    progress.received(MB * 118 / 10, {});
    EXPECT_EQ(bar().text(), "Firmware 11,8 MB");
    EXPECT_EQ(bar().state(), ProgressState::UnknownShare);
    for (const std::uint64_t less : {std::uint64_t{0}, MB}) {
        advance(progress, 100ms);
        progress.received(2 * MB, less);
        EXPECT_EQ(bar().text(), "Firmware 2,0 MB");
        EXPECT_EQ(bar().state(), ProgressState::UnknownShare);
    }
}

TEST_F(TransferText, IsShownTenTimesASecondAtTheMost) {
    computer().web["http://h/a"] = std::string(2048 * 1000, 'x');
    computer().announcedLength = 2048 * 1000;
    computer().clockStep = 1ms;
    unit::RecordingView view;
    bar().attach(&view);
    const auto before = toolkit::now();
    online::OpenURL({window().StatusBar1.panel(2), bar()}, "http://h/a", "1");
    const std::chrono::milliseconds took =
        std::chrono::duration_cast<std::chrono::milliseconds>(toolkit::now() - before);
    const auto texts = std::count(view.shown.begin(), view.shown.end(), toolkit::Property::Text);
    EXPECT_GE(texts, 10);
    EXPECT_LE(texts, took / 100ms + 2);
    bar().attach(nullptr);
}

class JobProgress : public MainWindow {
protected:
    JobProgress() {
        startOnline();
        computer().announcedLength = {};
    }
};

/// The texts in their order.
class BarTexts : public toolkit::View {
public:
    explicit BarTexts(ProgressBar& bar) : bar_(bar) { bar_.attach(this); }
    ~BarTexts() override { bar_.attach(nullptr); }
    void show(toolkit::Property property) override {
        if (property != toolkit::Property::Text) return;
        texts.push_back(bar_.text());
    }
    std::vector<std::string> texts;

private:
    ProgressBar& bar_;
};

TEST_F(JobProgress, FollowsTheJobFromFileToFile) {
    BarTexts bar(window().prgUpdate);
    click(window().cmdChoose);
    EXPECT_EQ(bar.texts,
              (std::vector<std::string>{"Verbindung wird geprüft …", "Firmware …", "Firmware 0,0 MB",
                                        "Wird auf den Stick geschrieben …", "Settings …", "Settings 0,0 MB",
                                        "Wird auf den Stick geschrieben …", "Wird geprüft …",
                                        "Geprüft: 4 Dateien stimmen überein."}));
    EXPECT_EQ(window().prgUpdate.state(), ProgressState::None);
}

TEST_F(JobProgress, IsGoneWhenTheJobFails) {
    computer().writeResults["D:\\fw0.bin"] = platform::FileResult::DiskFull;
    click(window().cmdChoose);
    EXPECT_EQ(window().prgUpdate.text(), "");
    EXPECT_EQ(window().prgUpdate.state(), ProgressState::None);
}

TEST_F(JobProgress, IsNotThereForWhoDoesNotWantAJob) {
    computer().answer = [](const fake::Message&) { return 2; };
    BarTexts bar(window().prgUpdate);
    click(window().cmdChoose);
    EXPECT_TRUE(bar.texts.empty());
}

TEST_F(JobProgress, TheResultIsThereBeforeTheBox) {
    std::string shown;
    computer().answer = [&](const fake::Message& message) {
        if (message.title == "Update erfolgreich") shown = window().prgUpdate.text();
        return 1;
    };
    window().SelectedSettings = -1;
    click(window().cmdChoose);
    EXPECT_EQ(shown, "Geprüft: 3 Dateien stimmen überein.");
}

TEST_F(JobProgress, TheResultGoesWithTheStick) {
    click(window().cmdChoose);
    click(window().cmdSearch);
    EXPECT_EQ(window().prgUpdate.text(), "Geprüft: 4 Dateien stimmen überein.") << "it is the same stick";
    computer().drives["D:\\"].medium = "another";
    click(window().cmdSearch);
    EXPECT_EQ(window().prgUpdate.text(), "");
}

/// What the stick holds differs from what was written to it, in the file of that path.
void spoil(const std::string& path) {
    fake::computer().fails = [path](const std::string& operation) {
        if (operation == "compare " + path) fake::computer().files[path].contents += "?";
        return false;
    };
}

TEST_F(JobProgress, AFileThatDiffersOnTheStickIsAnErrorWithItsName) {
    for (const char* file : {"fw0.bin", "list0-0.txt", "autorun.inf", "orvantastick.ico"}) {
        unit::ProgramRun run;
        run.startOnline();
        const std::string path = "D:\\" + std::string(file);
        spoil(path);
        click(run.window().cmdChoose);
        ASSERT_EQ(computer().messages.size(), 2U) << "the question and the report";
        EXPECT_EQ(computer().messages[1].text, unit::errorReport(base::ErrorNumber::DeviceIo, path));
        EXPECT_EQ(status(), 1);
        EXPECT_EQ(run.window().prgUpdate.text(), "");
        EXPECT_TRUE(computer().shellCalls.empty());
    }
}

class CutDownload : public MainWindow {
protected:
    CutDownload() {
        startOnline();
        window().prgUpdate.attach(&view);
    }
    ~CutDownload() override { window().prgUpdate.attach(nullptr); }

    /// The n-th read of the job's files, counted from 1, finds the connection lost.
    static void cutAtRead(const std::string& file, int number) {
        computer().fails = [=, count = 0](const std::string& operation) mutable {
            return operation == "read " + unit::serverFile(file) && ++count == number;
        };
    }

    std::string text() { return window().prgUpdate.text(); }
    bool alerted() const {
        return std::count(view.shown.begin(), view.shown.end(), toolkit::Property::Alert) == 1;
    }

    unit::RecordingView view;
};

TEST_F(CutDownload, IsWarnedOfUntilTheNextJob) {
    computer().web[unit::serverFile("fw0.bin.txt")] = std::string(MB, 'x');
    cutAtRead("fw0.bin.txt", 513);
    click(window().cmdChoose);
    EXPECT_EQ(computer().messages[1].title, "Update erfolgreich");
    EXPECT_EQ(text(), "Achtung: Firmware unvollständig (1,0 MB). Bitte das Update wiederholen.");
    EXPECT_EQ(window().prgUpdate.state(), ProgressState::None);
    EXPECT_TRUE(alerted());
    computer().drives["D:\\"].medium = "another";
    click(window().cmdSearch);
    EXPECT_EQ(text(), "Achtung: Firmware unvollständig (1,0 MB). Bitte das Update wiederholen.");
    computer().fails = {};
    click(window().cmdChoose);
    EXPECT_EQ(text(), "Geprüft: 4 Dateien stimmen überein.");
}

TEST_F(CutDownload, TellsWhatWasAnnounced) {
    computer().web[unit::serverFile("list0-0.txt.txt")] = std::string(MB, 'x');
    computer().fails = [](const std::string& operation) {
        const bool settings = operation.ends_with("list0-0.txt.txt");
        computer().announcedLength = settings ? std::optional<std::uint64_t>(64 * MB) : std::nullopt;
        return false;
    };
    click(window().cmdChoose);
    EXPECT_EQ(text(), "Achtung: Settings unvollständig (1,0 von 64,0 MB). Bitte das Update wiederholen.");
}

TEST_F(CutDownload, OfBothFilesNamesBoth) {
    computer().web.erase(unit::serverFile("fw0.bin.txt"));
    computer().web.erase(unit::serverFile("list0-0.txt.txt"));
    click(window().cmdChoose);
    EXPECT_EQ(text(), "Achtung: Firmware unvollständig (0,0 MB), Settings unvollständig (0,0 MB). Bitte das "
                      "Update wiederholen.");
}

class Away : public MainWindow {
protected:
    Away() {
        startOnline();
        computer().active = false;
    }

    void expectTold(const std::string& title, const std::string& text) {
        ASSERT_EQ(computer().notifications.size(), 1U);
        EXPECT_EQ(computer().notifications[0].title, title);
        EXPECT_EQ(computer().notifications[0].text, text);
        EXPECT_EQ(computer().notifications[0].window, fake::windowHandle);
    }
};

TEST_F(Away, IsToldOfTheEndBeforeTheBox) {
    std::size_t told = 0;
    computer().answer = [&](const fake::Message& message) {
        if (message.title == "Update erfolgreich") told = computer().notifications.size();
        return 1;
    };
    click(window().cmdChoose);
    EXPECT_EQ(told, 1U);
    expectTold("Update abgeschlossen", "Geprüft: 4 Dateien stimmen überein.");
}

TEST_F(Away, IsToldOfAWarning) {
    computer().web.erase(unit::serverFile("fw0.bin.txt"));
    click(window().cmdChoose);
    expectTold("Update abgeschlossen",
               "Achtung: Firmware unvollständig (0,0 MB). Bitte das Update wiederholen.");
}

TEST_F(Away, IsToldOfAnError) {
    spoil("D:\\fw0.bin");
    click(window().cmdChoose);
    expectTold("Update fehlgeschlagen", "E/A-Fehler auf dem Gerät");
}

TEST_F(Away, IsToldThatThereIsNoConnection) {
    computer().web.clear();
    click(window().cmdChoose);
    expectTold("Update fehlgeschlagen", "Es konnte keine Verbindung hergestellt werden!");
}

TEST_F(Away, WhoIsNotIsNotTold) {
    computer().active = true;
    click(window().cmdChoose);
    EXPECT_TRUE(computer().notifications.empty());
}

TEST_F(Away, IsNotToldOfTheEndOfTheProgram) {
    computer().onPump = [this] { close(); };
    click(window().cmdChoose);
    EXPECT_TRUE(ended());
    EXPECT_TRUE(computer().notifications.empty());
}
