// Where the user guide is found, and what asks for it.

#include "main_window.h"

#include "app/handbook.h"
#include "format/Form1.h"
#include "toolkit/message_style.h"

using unit::MainWindow;

class Handbook : public MainWindow {
protected:
    Handbook() { putFile(beside, "<html>"); }

    static constexpr const char* beside = "/opt/tool\\Anleitung.html";

    static std::vector<std::string> opened() {
        std::vector<std::string> files;
        for (const fake::ShellCall& call : computer().shellCalls)
            files.push_back(call.file);
        return files;
    }

    void help() {
        event([this] { window().helpRequested(); });
    }

    void expectBox(const std::string& text) {
        ASSERT_EQ(computer().messages.size(), 1U);
        const fake::Message& box = computer().messages[0];
        EXPECT_EQ(box.text, text);
        EXPECT_EQ(box.style, toolkit::Exclamation);
        EXPECT_EQ(box.title, window().caption());
    }
};

TEST_F(Handbook, LiesBesideTheProgramOrInTheFolderOfAPackage) {
    putFile("/usr/share/doc\\Anleitung.html", "<html>");
    EXPECT_EQ(app::handbookFile("/usr/share/doc"), beside);
    computer().files.erase(beside);
    EXPECT_EQ(app::handbookFile("/usr/share/doc"), "/usr/share/doc\\Anleitung.html");
    EXPECT_EQ(app::handbookFile("/usr/share/doc/other"), "");
    EXPECT_EQ(app::handbookFile(""), "");
    putFile("\\Anleitung.html", "not the program's");
    EXPECT_EQ(app::handbookFile(""), "");
}

TEST_F(Handbook, OpensByTheKeyAndByTheButton) {
    start();
    help();
    click(window().cmdHelp);
    EXPECT_EQ(opened(), (std::vector<std::string>{beside, beside}));
    EXPECT_EQ(computer().shellCalls[0].verb, "open");
    EXPECT_TRUE(computer().messages.empty());
}

TEST_F(Handbook, OpensFromTheChoiceAmongSticks) {
    plugIn("E:\\");
    computer().onModal = [](toolkit::Form& dialog) {
        dialog.helpRequested();
        dialog.unload();
    };
    start();
    EXPECT_EQ(opened(), std::vector<std::string>{beside});
}

TEST_F(Handbook, AWindowThatNobodyHelpsWithIsSilent) {
    start();
    Form1 assistant(window());
    assistant.helpRequested();
    EXPECT_TRUE(opened().empty());
}

TEST_F(Handbook, WhatIsMissingIsSaid) {
    computer().files.erase(beside);
    start();
    help();
    EXPECT_TRUE(opened().empty());
    expectBox(
        "Die Anleitung fehlt. Installieren Sie das Programm neu, oder entpacken Sie sein Archiv noch einmal "
        "vollständig.");
}

TEST_F(Handbook, WhatCannotBeOpenedIsNamed) {
    computer().shellCodes[beside] = 31;
    start();
    help();
    EXPECT_TRUE(computer().choosers.empty());
    expectBox("Die Anleitung lässt sich nicht öffnen. Öffnen Sie diese Datei selbst, zum Beispiel mit Ihrem "
              "Browser:\r\n/opt/tool\\Anleitung.html");
}
