// What is started on Linux, and with which arguments; stand-ins for the desktop's commands write it down.
#include "platform/shell.h"

#include "tests/conformance/environment.h"
#include "tests/conformance/linux/temporary_folder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <sstream>
#include <thread>
#include <vector>

using conformance::Drives;
using conformance::TemporaryFolder;
using namespace platform;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

namespace {

/// One line a start: number of arguments, then each in brackets; with its process, session, open files and
/// ignored signals beside it.
constexpr const char* openCommand = R"sh(#!/bin/sh
case "$1" in *wait.txt) read -r line < "$RECORDS/gate";; esac
ls -l /proc/$$/fd > "$RECORDS/files"
grep '^SigIgn' /proc/self/status | cut -f 2 > "$RECORDS/ignored"
echo "$$ $(cut -d' ' -f6 /proc/$$/stat)" > "$RECORDS/session"
{ printf '%s' "$#"; printf '<%s>' "$@"; echo; } >> "$RECORDS/open"
)sh";

/// Types by extension; only text/plain and text/x-ini have a program.
constexpr const char* mimeCommand = R"sh(#!/bin/sh
{ printf '%s' "$#"; printf '<%s>' "$@"; echo; } >> "$RECORDS/mime"
case "$2 $3" in
"filetype "*.txt) echo text/plain;;
"filetype "*.ini) echo 'text/x-ini; charset=us-ascii';;
"filetype "*.odd) echo application/x-odd;;
"filetype "*.untyped) ;;
"filetype "*.hang) sleep 600;;
"default text/plain") echo editor.desktop;;
"default text/x-ini") echo editor.desktop;;
"default application/x-odd") echo;;
esac
)sh";

class ShellStart : public testing::Test {
protected:
    void SetUp() override {
        fs::create_directory(folder_.path() / "bin");
        addCommand("xdg-open", openCommand);
        addCommand("xdg-mime", mimeCommand);
        // No file browser of the desktop's that these tests run on.
        setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + (folder_.path() / "none").string()).c_str(), 1);
        setenv("RECORDS", folder_.path().c_str(), 1);
        setenv("PATH", (folder_.path() / "bin:").string().append(path_).c_str(), 1);
    }
    void TearDown() override { setenv("PATH", path_.c_str(), 1); }

    void addCommand(const char* name, const char* script) const {
        const fs::path file = folder_.path() / "bin" / name;
        std::ofstream(file) << script;
        fs::permissions(file, fs::perms::owner_all);
    }

    static int open(std::string_view file) { return shellExecute(0, "open", file, "", "", showNormal); }

    /// Whole lines: the command writes each in pieces, and is not waited for.
    std::vector<std::string> records(const char* name) const {
        std::ifstream file(folder_.path() / name);
        std::vector<std::string> lines;
        for (std::string line; std::getline(file, line) && !file.eof();)
            lines.push_back(line);
        return lines;
    }

    /// The starts of xdg-open, as soon as there are `count` of them.
    std::vector<std::string> starts(std::size_t count) const {
        const auto deadline = std::chrono::steady_clock::now() + 20s;
        while (records("open").size() < count && std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(5ms);
        return records("open");
    }

    void addFile(const char* name) const { std::ofstream(stick / name) << "text"; }

    /// Nothing has been started so far but what is started now.
    void expectNoStartBefore() const {
        EXPECT_EQ(open("http://sentinel/"), ShellAccepted);
        EXPECT_EQ(starts(1), std::vector<std::string>{"1<http://sentinel/>"});
    }

    const std::string path_ = getenv("PATH");
    TemporaryFolder folder_;
    Drives drives;
    const fs::path stick = drives.add('E', DriveRemovable);
};

using Lines = std::vector<std::string>;

} // namespace

TEST_F(ShellStart, AddressGoesToTheBrowser) {
    EXPECT_EQ(open("http://host.example/page?a=1&b=2#c"), ShellAccepted);
    EXPECT_EQ(starts(1), Lines{"1<http://host.example/page?a=1&b=2#c>"});
    EXPECT_EQ(open("HTTPS://host.example"), ShellAccepted);
    EXPECT_EQ(starts(2).back(), "1<HTTPS://host.example>");
    EXPECT_TRUE(records("mime").empty());
}

TEST_F(ShellStart, BareWebHostIsAnAddress) {
    EXPECT_EQ(open("www.host.example/page"), ShellAccepted);
    EXPECT_EQ(starts(1), Lines{"1<http://www.host.example/page>"});
}

TEST_F(ShellStart, AddressIsOneArgumentAndHoldsNothingIllegal) {
    EXPECT_EQ(open("http://h/a b;$(touch x)`\"'\n--option\\"), ShellAccepted);
    EXPECT_EQ(starts(1), Lines{"1<http://h/a%20b;$(touch%20x)%60%22'%0A--option%5C>"});
}

// The program passes "0" for both when it opens its update page.
TEST_F(ShellStart, ParametersAndDirectoryDoNotCount) {
    EXPECT_EQ(shellExecute(0, "open", "http://host.example", "0", "0", showNormal), ShellAccepted);
    EXPECT_EQ(starts(1), Lines{"1<http://host.example>"});
}

TEST_F(ShellStart, VerbRegardlessOfCaseOrNone) {
    EXPECT_EQ(shellExecute(0, "OPEN", "http://one", "", "", showNormal), ShellAccepted);
    EXPECT_EQ(starts(1).back(), "1<http://one>");
    EXPECT_EQ(shellExecute(0, "", "http://two", "", "", showNormal), ShellAccepted);
    EXPECT_EQ(starts(2).back(), "1<http://two>");
}

TEST_F(ShellStart, OtherVerbsAndOtherSchemesStartNothing) {
    EXPECT_EQ(shellExecute(0, "print", "http://host.example", "", "", showNormal), ShellNoAssociation);
    for (const char* address : {"file:///etc/passwd", "mailto:somebody@host.example", "javascript:alert(1)",
                                "ftp://h/x", "http:", "http://", "ssh://-oProxyCommand=x"})
        EXPECT_EQ(open(address), ShellNoAssociation) << address;
    expectNoStartBefore();
}

TEST_F(ShellStart, WhatIsNeitherAddressNorPathStartsNothing) {
    EXPECT_EQ(open(""), ShellFileNotFound);
    for (const char* file : {"--help", "host.example", "/etc/passwd", "..", "E:\\nul", "E:\\a*b", "E:\\\n"})
        EXPECT_EQ(open(file), ShellPathNotFound) << file;
    expectNoStartBefore();
}

TEST_F(ShellStart, FolderGoesToTheFileBrowser) {
    fs::create_directory(stick / "-a folder");
    EXPECT_EQ(open("E:\\-A FOLDER"), ShellAccepted);
    EXPECT_EQ(starts(1), Lines{"1<" + (stick / "-a folder" / "").string() + ">"});
    EXPECT_EQ(open("E:\\"), ShellAccepted);
    EXPECT_EQ(fs::path(starts(2).back().substr(2)).parent_path(), stick);
    EXPECT_TRUE(records("mime").empty());
}

TEST_F(ShellStart, FolderIsShownAsOneWhateverItIsCalled) {
    fs::create_directory(stick / "Fotos.desktop");
    EXPECT_EQ(showFolder(0, "E:\\Fotos.desktop"), ShellAccepted);
    EXPECT_EQ(starts(1), Lines{"1<" + (stick / "Fotos.desktop" / "").string() + ">"});
    EXPECT_EQ(showFolder(0, "E:\\"), ShellAccepted);
    EXPECT_EQ(starts(2).back(), "1<" + (stick / "").string() + ">");
}

TEST_F(ShellStart, NothingButAFolderIsShown) {
    addFile("Fotos.desktop");
    fs::create_directory_symlink("/etc", stick / "away");
    for (const char* path : {"", "E:\\Fotos.desktop", "E:\\Fotos.desktop\\", "E:\\missing", "E:\\away",
                             "Q:\\", "/etc", "file:///etc", "http://host.example"})
        EXPECT_LE(showFolder(0, path), 32) << path;
    expectNoStartBefore();
}

TEST_F(ShellStart, DocumentGoesToItsProgram) {
    addFile("-read me.txt");
    EXPECT_EQ(shellExecute(0, "open", "E:\\-read me.txt", "0", "0", showNormal), ShellAccepted);
    const std::string argument = "<" + (stick / "-read me.txt").string() + ">";
    EXPECT_EQ(starts(1), Lines{"1" + argument});
    EXPECT_EQ(records("mime"), (Lines{"3<query><filetype>" + argument, "3<query><default><text/plain>"}));
}

TEST_F(ShellStart, TypeMayCarryACharset) {
    addFile("usb.ini");
    EXPECT_EQ(open("E:\\usb.ini"), ShellAccepted);
    EXPECT_EQ(records("mime").back(), "3<query><default><text/x-ini>");
    starts(1);
}

TEST_F(ShellStart, DocumentWithoutAProgram) {
    addFile("file.odd");
    addFile("file.untyped");
    EXPECT_EQ(open("E:\\file.odd"), ShellNoAssociation);
    EXPECT_EQ(open("E:\\file.untyped"), ShellNoAssociation);
    expectNoStartBefore();
}

TEST_F(ShellStart, PageGoesToTheBrowserThatTheUserNames) {
    addFile("page.html");
    addFile("file.odd");
    setenv("BROWSER", "", 1);
    EXPECT_EQ(open("E:\\page.html"), ShellNoAssociation);
    setenv("BROWSER", "a-browser", 1);
    EXPECT_EQ(open("E:\\file.odd"), ShellNoAssociation);
    EXPECT_EQ(open("E:\\page.html"), ShellAccepted);
    EXPECT_EQ(starts(1), Lines{"1<" + (stick / "page.html").string() + ">"});
    unsetenv("BROWSER");
}

TEST_F(ShellStart, FileThatIsMissingIsNotAskedAbout) {
    EXPECT_EQ(open("E:\\missing.txt"), ShellFileNotFound);
    EXPECT_EQ(open("E:\\missing\\file.txt"), ShellPathNotFound);
    EXPECT_EQ(open("E:\\missing\\"), ShellPathNotFound);
    EXPECT_EQ(open("Q:\\file.txt"), ShellPathNotFound);
    EXPECT_TRUE(records("mime").empty());
    expectNoStartBefore();
}

TEST_F(ShellStart, LinkOnAStickIsNotFollowed) {
    fs::create_symlink("/etc/passwd", stick / "link.txt");
    EXPECT_LE(open("E:\\link.txt"), 32);
    expectNoStartBefore();
}

TEST_F(ShellStart, QueryThatHangsIsNotWaitedForLong) {
    addFile("file.hang");
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(open("E:\\file.hang"), ShellAccepted) << "what cannot be found out is left to xdg-open";
    const auto took = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(took, 1900ms);
    EXPECT_LT(took, 15s);
    EXPECT_EQ(starts(1).size(), 1U);
}

TEST_F(ShellStart, StartedProgramIsNotWaitedFor) {
    addFile("wait.txt");
    const fs::path gate = folder_.path() / "gate";
    ASSERT_EQ(mkfifo(gate.c_str(), 0600), 0);
    EXPECT_EQ(open("E:\\wait.txt"), ShellAccepted);
    EXPECT_TRUE(records("open").empty());
    std::ofstream(gate) << "go\n"; // waits until the command reads
    EXPECT_EQ(starts(1).size(), 1U);
}

TEST_F(ShellStart, StartedProgramIsOnItsOwn) {
    const fs::path leak = folder_.path() / "leak";
    const int file = ::open(leak.c_str(), O_CREAT | O_RDWR, 0600); // inherited, were it not for the start
    EXPECT_EQ(open("http://host.example"), ShellAccepted);
    ::close(file);
    starts(1);
    for (const std::string& line : records("files"))
        EXPECT_EQ(line.find(leak.string()), std::string::npos) << line;
    const std::string session = records("session").at(0);
    EXPECT_EQ(session.substr(0, session.find(' ')), session.substr(session.find(' ') + 1))
        << "leads its session";
    siginfo_t child = {};
    EXPECT_EQ(waitid(P_ALL, 0, &child, WEXITED | WNOHANG | WNOWAIT), -1)
        << "there must be no child, not even a dead one";
}

TEST_F(ShellStart, SignalsThatThisProgramIgnoresMeanSomethingToWhatItStarts) {
    auto* const before = std::signal(SIGPIPE, SIG_IGN);
    EXPECT_EQ(open("http://host.example"), ShellAccepted);
    starts(1);
    std::signal(SIGPIPE, before);
    EXPECT_EQ(std::stoul(records("ignored").at(0), nullptr, 16) & (1UL << (SIGPIPE - 1)), 0U);
}

TEST_F(ShellStart, NoDesktopCommands) {
    addFile("file.txt");
    setenv("PATH", folder_.path().c_str(), 1);
    EXPECT_EQ(open("http://host.example"), ShellAccessDenied);
    EXPECT_EQ(open("E:\\file.txt"), ShellAccessDenied);
    EXPECT_EQ(open("E:\\"), ShellAccessDenied);
}

TEST_F(ShellStart, NoChooserWithoutASessionBus) {
    addFile("file.odd");
    EXPECT_FALSE(startOpenWithChooser("rundll32.exe shell32.dll,OpenAs_RunDLL E:\\file.odd"));
}
