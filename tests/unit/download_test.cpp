// Fetching files and the three file routines beside it.

#include "main_window.h"

#include "online/download.h"

#include <algorithm>

using namespace online;
using unit::errorOf;
using unit::MainWindow;

class Download : public MainWindow {
protected:
    static constexpr const char* url = "http://server.example/file";

    Download() { start(); }

    /// A file of that many full reads.
    static void serve(std::size_t reads, std::size_t more = 0) {
        computer().web[url] = std::string(reads * 2048 + more, 'x');
    }

    Display display() { return {window().StatusBar1.panel(2), window().prgUpdate}; }
    std::string panel() { return window().StatusBar1.panel(2).text(); }
    std::string toolTip() { return window().StatusBar1.panel(2).toolTip(); }
    std::string fetch(const char* downtype) { return OpenURL(display(), url, downtype); }
};

TEST_F(Download, ReturnsTheBytesAsTheyAre) {
    std::string bytes;
    for (int i = 0; i < 5000; ++i)
        bytes += static_cast<char>(i % 256);
    computer().web[url] = bytes;
    EXPECT_EQ(fetch("0"), bytes);
    EXPECT_EQ(fetch("1"), bytes);
    EXPECT_EQ(fetch("2"), bytes);
}

TEST_F(Download, NamesItsAgentAndGoesPastTheCache) {
    fetch("0");
    EXPECT_EQ(computer().agents, std::vector<std::string>{"Qentra:INET 0"});
    EXPECT_EQ(computer().fetched, std::vector<std::string>{url});
    EXPECT_EQ(computer().fetchFlags, std::vector<std::uint32_t>{0x80000000U});
    OpenURL(display(), url, "0", 3);
    EXPECT_EQ(computer().agents[1], "Qentra:INET 3");
}

TEST_F(Download, WhatCannotBeReachedIsEmptyAndReportsNothing) {
    EXPECT_EQ(fetch("0"), "");
    EXPECT_EQ(fetch("1"), "");
    EXPECT_TRUE(computer().messages.empty());
    EXPECT_EQ(panel(), "Suche nach Updates...");
}

TEST_F(Download, AnEmptyFileIsEmpty) {
    computer().web[url] = "";
    EXPECT_EQ(fetch("2"), "");
    EXPECT_EQ(panel(), "Suche nach Updates...");
}

TEST_F(Download, KeepsWhatCameBeforeTheConnectionWasLost) {
    serve(10);
    int reads = 0;
    computer().fails = [&](const std::string& operation) {
        return operation.starts_with("read ") && ++reads == 4;
    };
    EXPECT_EQ(fetch("1").size(), 3 * 2048U);
}

TEST_F(Download, ATextCountsOnlyAsAWhole) {
    serve(10);
    EXPECT_EQ(OpenTextFile(window().prgUpdate, url).value_or("").size(), 10 * 2048U);
    for (int last = 2; last <= 11; ++last) {
        computer().fails = [&, reads = 0](const std::string& operation) mutable {
            return operation.starts_with("read ") && ++reads == last;
        };
        EXPECT_EQ(fetch("0"), "") << last;
        computer().fails = [&, reads = 0](const std::string& operation) mutable {
            return operation.starts_with("read ") && ++reads == last;
        };
        EXPECT_FALSE(OpenTextFile(window().prgUpdate, url)) << last;
    }
}

TEST_F(Download, ATextThatIsShorterThanAnnouncedWasCut) {
    serve(1);
    for (const std::uint64_t announced : {0U, 1U, 2048U}) {
        computer().announcedLength = announced;
        EXPECT_EQ(fetch("0").size(), 2048U) << announced;
    }
    computer().announcedLength = 2049;
    EXPECT_EQ(fetch("0"), "");
    EXPECT_FALSE(OpenTextFile(window().prgUpdate, url));
    EXPECT_EQ(fetch("1").size(), 2048U);
    computer().web[url] = "";
    EXPECT_FALSE(OpenTextFile(window().prgUpdate, url)) << "nothing of it came";
}

TEST_F(Download, ATextThatCannotBeReachedIsEmptyAndWasNotCut) {
    EXPECT_EQ(OpenTextFile(window().prgUpdate, url), "");
}

TEST_F(Download, AFileMayFillTheRoomOfItsDestination) {
    serve(10, 7);
    const Destination exact{"D:\\a", 10 * 2048 + 7};
    EXPECT_EQ(OpenURL(display(), url, "1", 0, exact).size(), exact.room);
}

TEST_F(Download, AFileWithoutRoomEndsAsSoonAsThatIsKnown) {
    serve(100);
    const Destination small{"D:\\a", 3 * 2048};
    computer().journal.clear();
    try {
        OpenURL(display(), url, "1", 0, small);
        FAIL() << "no error";
    } catch (const base::RuntimeError& error) {
        EXPECT_EQ(error.number(), base::ErrorNumber::DiskFull);
        EXPECT_EQ(error.subject(), "D:\\a");
    }
    EXPECT_EQ(std::count(computer().journal.begin(), computer().journal.end(), std::string("read ") + url),
              4);
    computer().announcedLength = 3 * 2048 + 1;
    computer().journal.clear();
    EXPECT_EQ(errorOf([&] { OpenURL(display(), url, "1", 0, small); }), 61);
    EXPECT_EQ(std::count(computer().journal.begin(), computer().journal.end(), std::string("read ") + url),
              1);
}

TEST_F(Download, WithoutProgressNothingIsShownAndNoEventsRun) {
    serve(50);
    for (const char* downtype : {"0", "3", "-1", "10"}) {
        EXPECT_EQ(fetch(downtype).size(), 50 * 2048U);
        EXPECT_EQ(panel(), "Suche nach Updates...");
        EXPECT_EQ(computer().pumps, 0);
    }
}

TEST_F(Download, ADowntypeThatIsNoNumberIsAnError) {
    serve(1);
    EXPECT_EQ(errorOf([this] { fetch("x"); }), 13);
    EXPECT_EQ(errorOf([this] { fetch(""); }), 13);
}

TEST_F(Download, FirmwareShowsADotMoreAfterTwentyReads) {
    serve(20);
    fetch("1");
    EXPECT_EQ(panel(), "Firmware-Update .") << "the text is set before the dot of the same read";
    serve(20, 1);
    fetch("1");
    EXPECT_EQ(panel(), "Firmware-Update ..");
    serve(100);
    fetch("1");
    EXPECT_EQ(panel(), "Firmware-Update .....");
    EXPECT_EQ(toolTip(), "Firmwareupdate läuft...");
    EXPECT_TRUE(window().StatusBar1.panel(2).enabled());
}

TEST_F(Download, SettingsShowADotMoreAfterTwoReads) {
    serve(2);
    fetch("2");
    EXPECT_EQ(panel(), "Settings-Update .");
    serve(2, 1);
    fetch("2");
    EXPECT_EQ(panel(), "Settings-Update ..");
    serve(100);
    fetch("2");
    EXPECT_EQ(panel(), "Settings-Update " + std::string(50, '.'));
    EXPECT_EQ(toolTip(), "Settingsupdate läuft...");
}

TEST_F(Download, EventsRunAfterEveryReadButTheLast) {
    serve(7, 5);
    std::vector<std::string> shown;
    computer().onPump = [&] { shown.push_back(panel()); };
    fetch("2");
    const std::string text = "Settings-Update ";
    EXPECT_EQ(shown, (std::vector{text + ".", text + ".", text + "..", text + "..", text + "...",
                                  text + "...", text + "....", text + "...."}));
}

TEST_F(Download, ADisabledPanelIsEnabled) {
    window().StatusBar1.panel(2).setEnabled(false);
    serve(1);
    fetch("1");
    EXPECT_TRUE(window().StatusBar1.panel(2).enabled());
}

// The count of reads is a 16-bit number that nothing sets back; with full reads this is about 64 MB.
TEST_F(Download, WithoutProgressMoreThan32767ReadsOverflow) {
    computer().longestRead = 1;
    computer().web[url] = std::string(32766, 'x');
    EXPECT_EQ(fetch("0").size(), 32766U) << "the read that finds the end is the 32767th";
    computer().journal.clear();
    computer().web[url] += 'x';
    EXPECT_EQ(errorOf([this] { fetch("0"); }), 6);
    EXPECT_EQ(computer().journal.size(), 1U + 32767U) << "the 32768th read is not made";
}

TEST_F(Download, WithProgressNothingOverflows) {
    computer().longestRead = 1;
    computer().web[url] = std::string(33000, 'x');
    EXPECT_EQ(fetch("1").size(), 33000U);
    EXPECT_EQ(panel(), "Firmware-Update " + std::string(1650, '.'));
}

class FileRoutines : public MainWindow {
protected:
    static constexpr const char* path = "D:\\a.txt";
    static void withAttributes(std::uint32_t attributes) { computer().files[path] = {"abc", attributes}; }
};

TEST_F(FileRoutines, AFileExistsUnlessItIsAFolderOrAVolumeLabel) {
    EXPECT_FALSE(FileExists(path));
    for (const std::uint32_t attributes : {32U, 0U, 1U, 2U, 4U, 128U, 39U}) {
        withAttributes(attributes);
        EXPECT_TRUE(FileExists(path)) << attributes;
    }
    for (const std::uint32_t attributes : {16U, 8U, 24U, 17U, 48U}) {
        withAttributes(attributes);
        EXPECT_FALSE(FileExists(path)) << attributes;
    }
}

TEST_F(FileRoutines, ReadsAWholeFileAndNothingOfAMissingOne) {
    EXPECT_EQ(ReadFile(path), "");
    putFile(path, std::string("a\0\r\n\x1A", 5));
    EXPECT_EQ(ReadFile(path), std::string("a\0\r\n\x1A", 5));
    putFile(path, "");
    computer().journal.clear();
    EXPECT_EQ(ReadFile(path), "");
    EXPECT_TRUE(computer().journal.empty()) << "an empty file is not opened";
}

TEST_F(FileRoutines, AFileThatCannotBeReadIsAnError) {
    putFile(path, "abc");
    computer().failure = platform::FileResult::DeviceIo;
    computer().fails = [](const std::string&) { return true; };
    EXPECT_EQ(errorOf([] { ReadFile(path); }), 57);
    EXPECT_EQ(errorOf([] { WriteFile(path, "xyz"); }), 57);
}

TEST_F(FileRoutines, WritesExactlyTheText) {
    WriteFile(path, std::string("a\0b", 3));
    EXPECT_EQ(computer().files[path].contents, std::string("a\0b", 3)) << "no line end is appended";
    WriteFile(path, "");
    EXPECT_EQ(computer().files[path].contents, "");
}

TEST_F(FileRoutines, TheSameTextIsWrittenOnce) {
    WriteFile(path, "abc");
    WriteFile(path, "abc");
    EXPECT_EQ(computer().writes.size(), 1U);
    WriteFile(path, "abd");
    WriteFile(path, "abde");
    EXPECT_EQ(computer().writes.size(), 3U);
    EXPECT_EQ(computer().files[path].contents, "abde");
}

TEST_F(FileRoutines, WhatTheMediumHoldsDecidesNotWhatTheSystemRemembers) {
    WriteFile(path, "abc");
    computer().journal.clear();
    EXPECT_FALSE(WriteFile(path, "abc"));
    EXPECT_EQ(computer().journal, std::vector<std::string>{"compare D:\\a.txt"});
}

TEST_F(FileRoutines, WhatCannotBeReadIsWrittenAnew) {
    WriteFile(path, "abc");
    computer().failure = platform::FileResult::DeviceIo;
    computer().fails = [](const std::string& operation) { return operation.starts_with("compare "); };
    EXPECT_TRUE(WriteFile(path, "abc"));
    computer().failure = platform::FileResult::FileNotFound;
    EXPECT_TRUE(WriteFile(path, "abc")) << "gone since it was looked for";
    computer().failure = platform::FileResult::DiskNotReady;
    EXPECT_EQ(errorOf([] { WriteFile(path, "abc"); }), 71);
    EXPECT_EQ(computer().writes.size(), 3U);
}

TEST_F(FileRoutines, AnEmptyFileIsCreatedButNotWrittenAgain) {
    WriteFile(path, "");
    WriteFile(path, "");
    EXPECT_EQ(computer().writes.size(), 1U);
}

TEST_F(FileRoutines, AnotherLengthIsNotEvenRead) {
    putFile(path, "abcd");
    computer().journal.clear();
    WriteFile(path, "abc");
    EXPECT_EQ(computer().journal, std::vector<std::string>{"write D:\\a.txt"});
}

TEST_F(FileRoutines, AFileThatCannotBeWrittenIsAnErrorWithItsPath) {
    for (const auto result : {platform::FileResult::DiskFull, platform::FileResult::PermissionDenied,
                              platform::FileResult::DiskNotReady, platform::FileResult::PathNotFound}) {
        computer().writeResults[path] = result;
        EXPECT_EQ(errorOf([] { WriteFile(path, "abc"); }), static_cast<int>(result));
    }
    try {
        WriteFile(path, "abc");
    } catch (const base::RuntimeError& error) {
        EXPECT_EQ(error.subject(), path);
    }
}

TEST_F(Download, WhatTheServerAnnouncesNeedNotBeTrue) {
    const std::string contents(5000, 'x');
    for (const std::uint64_t announced :
         {std::uint64_t{0}, std::uint64_t{1}, std::uint64_t{9000}, ~std::uint64_t{0}}) {
        computer().announcedLength = announced;
        computer().web["http://h/a"] = contents;
        EXPECT_EQ(OpenURL(display(), "http://h/a", "1"), contents) << announced;
    }
}
