// What the shell starts: programs that this test has associated with documents and addresses.
#include "platform/shell.h"

#include "platform/program_folder.h"
#include "platform/text.h"
#include "tests/conformance/environment.h"
#include "tests/conformance/scratch_files.h"
#include "tests/conformance/windows/environment_unix.h"

#include <gtest/gtest.h>

#include <windows.h>

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
    EXPECT_EQ(noted(), toAnsi("E:\\ä ß €.orvtest"));
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
