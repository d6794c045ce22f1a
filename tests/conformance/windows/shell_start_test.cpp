// What the shell starts: programs that this test has associated with documents and addresses.
#include "platform/shell.h"

#include "base/text.h"
#include "platform/program_folder.h"
#include "tests/conformance/environment.h"
#include "tests/conformance/scratch_files.h"
#include "tests/conformance/windows/environment_unix.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <array>
#include <stdexcept>
#include <vector>

using namespace conformance;
using namespace platform;
namespace fs = std::filesystem;

namespace {

/// While it lives the test's child is the program of a type of documents, or of a scheme of addresses, and
/// notes what it is started for. It stands where it goes for all users of this Wine prefix.
class Association {
public:
    /// `name` begins with a dot for an extension.
    Association(const std::string& name, const fs::path& note) : name_(name) {
        const bool isScheme = name[0] != '.';
        if (isScheme)
            set(name, "URL Protocol", "");
        else
            set(name, nullptr, documentClass);
        const std::string command =
            "\"" + programFolder() + "\\process_child.exe\" note \"" + note.string() + "\" \"%1\"";
        set((isScheme ? name : documentClass) + "\\shell\\open\\command", nullptr, command);
    }
    Association(const Association&) = delete;
    Association& operator=(const Association&) = delete;
    ~Association() {
        RegDeleteTreeA(HKEY_CLASSES_ROOT, name_.c_str());
        RegDeleteTreeA(HKEY_CLASSES_ROOT, documentClass.c_str());
    }

private:
    static void set(const std::string& path, const char* field, const std::string& value) {
        if (RegSetKeyValueA(HKEY_CLASSES_ROOT, path.c_str(), field, REG_SZ, value.c_str(),
                            static_cast<DWORD>(value.size() + 1)) != ERROR_SUCCESS)
            throw std::runtime_error("cannot set " + path);
    }

    inline static const std::string documentClass = "ConformanceDocument";

    std::string name_;
};

/// While it lives the test's child opens what belongs to a class of the system's own, and notes it with a bar
/// behind it. The conversation that the system would hold with its own program is put away meanwhile: the
/// child does not answer.
class Opener {
public:
    Opener(std::string name, const fs::path& note) : name_(std::move(name)) {
        move(conversation, putAway);
        DWORD size = sizeof before_;
        if (RegGetValueA(HKEY_CLASSES_ROOT, (name_ + command).c_str(), nullptr, RRF_RT_ANY | RRF_NOEXPAND,
                         &type_, before_.data(), &size) == ERROR_SUCCESS)
            size_ = size;
        const std::string line =
            "\"" + programFolder() + "\\process_child.exe\" note \"" + note.string() + "\" \"%1|\"";
        set(REG_SZ, line.c_str(), static_cast<DWORD>(line.size() + 1));
    }
    Opener(const Opener&) = delete;
    Opener& operator=(const Opener&) = delete;
    ~Opener() {
        if (size_ > 0)
            set(type_, before_.data(), size_);
        else
            RegDeleteTreeA(HKEY_CLASSES_ROOT, (name_ + "\\shell").c_str());
        move(putAway, conversation);
    }

private:
    static constexpr const char* command = "\\shell\\open\\command";
    static constexpr const char* conversation = "\\shell\\open\\ddeexec";
    static constexpr const char* putAway = "\\conformance-ddeexec";

    /// A key of the class, with all that is below it.
    void move(const char* from, const char* to) const {
        HKEY target = nullptr;
        if (RegOpenKeyExA(HKEY_CLASSES_ROOT, (name_ + from).c_str(), 0, KEY_READ, &target) != ERROR_SUCCESS)
            return;
        RegCloseKey(target);
        RegCreateKeyA(HKEY_CLASSES_ROOT, (name_ + to).c_str(), &target);
        if (RegCopyTreeA(HKEY_CLASSES_ROOT, (name_ + from).c_str(), target) == ERROR_SUCCESS)
            RegDeleteTreeA(HKEY_CLASSES_ROOT, (name_ + from).c_str());
        RegCloseKey(target);
    }

    void set(DWORD type, const char* value, DWORD size) const {
        RegSetKeyValueA(HKEY_CLASSES_ROOT, (name_ + command).c_str(), nullptr, type, value, size);
    }

    std::string name_;
    DWORD type_ = 0;
    DWORD size_ = 0; ///< 0: there was none
    std::array<char, 1000> before_ = {};
};

class ShellStart : public testing::Test {
protected:
    static int open(std::string_view file) { return shellExecute(0, "open", file, "", "", showNormal); }

    /// What the program was started for, in the ANSI code page.
    std::string noted() const {
        waitForFile(note.wstring());
        return get(note);
    }

    Drives drives;
    const fs::path stick = drives.add('E', DriveRemovable);
    const fs::path note = drives.add('F', DriveFixed) / "note";
};

} // namespace

TEST_F(ShellStart, ADocumentIsOpenedByItsProgram) {
    const Association association(".orvtest", note);
    put(stick / named("ä ß €.orvtest"), "text");
    EXPECT_GT(open("E:\\ä ß €.orvtest"), 32);
    EXPECT_EQ(noted(), base::toAnsi("E:\\ä ß €.orvtest"));
}

TEST_F(ShellStart, AnAddressIsOpenedByItsProgram) {
    const Association association("orvtest", note);
    EXPECT_GT(open("orvtest://host/index_link.php?ref=usbtool&a=%20"), 32);
    EXPECT_EQ(noted(), "orvtest://host/index_link.php?ref=usbtool&a=%20");
}

TEST_F(ShellStart, ADocumentWithoutAProgramIsToldByItsCode) {
    put(stick / named("ä.orvtest"), "text");
    EXPECT_EQ(open("E:\\ä.orvtest"), ShellNoAssociation);
}

TEST_F(ShellStart, ANameOutsideTheCodePageIsNotTakenForAnother) {
    const Association association(".orvtest", note);
    put(stick / named("日.orvtest"), "text");
    EXPECT_EQ(open("E:\\日.orvtest"), ShellFileNotFound);
    EXPECT_FALSE(fs::exists(note));
}

TEST_F(ShellStart, AnAddressHasNoCharacterThatEndsIt) {
    const Opener opener("http", note);
    EXPECT_GT(open("http://host/a b\" -c calc \\?<&>"), 32);
    EXPECT_EQ(noted(), "http://host/a%20b%22%20-c%20calc%20%5C?%3C&%3E|");
    EXPECT_EQ(open("http:"), ShellFileNotFound);
    EXPECT_EQ(open("https://"), ShellFileNotFound);
}

/// The program of the class of folders gets what has a folder's form alone.
TEST_F(ShellStart, AFolderIsShownWhateverItIsCalled) {
    fs::create_directory(stick / "Fotos.exe");
    fs::create_directory(stick / "Fotos");
    fs::copy_file(fs::path(programFolder()) / "process_child.exe", stick / "Fotos.com");
    const Opener opener("Folder", note);
    for (const std::string name : {"Fotos.exe", "Fotos"}) {
        fs::remove(note);
        EXPECT_GT(showFolder(0, "E:\\" + name), 32) << name;
        EXPECT_EQ(noted(), "E:\\" + name + "\\|");
    }
}

TEST_F(ShellStart, NothingButAFolderIsShown) {
    fs::create_directory(stick / "folder");
    fs::copy_file(fs::path(programFolder()) / "process_child.exe", stick / "Fotos.exe");
    const Association association(".orvtest", note);
    put(stick / "file.orvtest", "text");
    for (const char* path :
         {"", "E:\\Fotos.exe", "E:\\Fotos.exe\\", "E:\\Fotos", "E:\\Fotos\\", "E:\\file.orvtest",
          "E:\\missing", "Q:\\", "file:///C:/", "http://host.example", "folder"})
        EXPECT_LE(showFolder(0, path), 32) << path;
    EXPECT_FALSE(fs::exists(note));
}

TEST_F(ShellStart, TheChooserIsStarted) {
    put(stick / named("ä.orvtest"), "text");
    EXPECT_TRUE(startOpenWithChooser("rundll32.exe shell32.dll,OpenAs_RunDLL E:\\ä.orvtest"));
}

TEST_F(ShellStart, NothingButTheChooserIsStartedByIt) {
    const std::string child = programFolder() + "\\process_child.exe note " + note.string() + " x";
    EXPECT_FALSE(startOpenWithChooser(child));
    EXPECT_FALSE(startOpenWithChooser("rundll32.exe"));
    EXPECT_FALSE(startOpenWithChooser(""));
    EXPECT_FALSE(fs::exists(note));
}
