#pragma once

#include "format/Form1.h"

#include "app/frmMain.h"
#include "fake.h"
#include "fake_process.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

inline constexpr const char* firstText =
    "Vergewisseren Sie sich dass die USB-Platte NICHT am PC angeschlossen ist und drücken "
    "Sie dann auf WEITER.";
inline constexpr const char* secondText =
    "Schließen Sie jetzt die USB-Festplatte an.\r\n\r\nFalls die Festplatte "
    "nicht gefunden wird, schließen Sie die "
    "Platte nochmal ab und gehen einen Schritt ZURÜCK.";
inline constexpr const char* thirdText = "USB-Festplatte gefunden!\r\nLaufwerksbuchstabe: E:";

/// The assistant over the main window, on a computer with a hard disk and a network drive, for an
/// administrator.
class FormatAssistant : public testing::Test {
protected:
    FormatAssistant() {
        fake::reset();
        fake::resetConsole();
        fake::computer().drives["C:\\"].type = platform::DriveFixed;
        fake::computer().drives["Z:\\"].type = platform::DriveRemote;
        for (const char* name : {"file.bmp", "nofile.bmp"})
            fake::computer().files[std::string("/opt/tool\\") + name].contents = "picture";
        setAdministrator(true);
        window.show();
        assistant.show(&window);
        fake::computer().messages.clear();
        fake::computer().windows.clear();
    }

    static void setAdministrator(bool is) {
        fake::accounts().user = "anna";
        fake::accounts().groups["Administratoren"] = {is ? "anna" : "bert"};
    }

    static void plug(const std::string& root, std::uint32_t type = platform::DriveFixed) {
        fake::computer().drives[root].type = type;
        fake::computer().drives[root].total = 1000;
    }

    void goToSecondStep() { assistant.Command1.click(); }

    void goToThirdStep() {
        goToSecondStep();
        plug("E:\\");
        assistant.Timer1.tick();
    }

    /// The formatter writes that and ends.
    static void formatterWrites(const std::string& text) {
        fake::console().onStart = [text](fake::Child& child) {
            child.write(text);
            child.exit();
        };
    }

    void expectStep(const std::string& title, const std::string& text, bool next) {
        EXPECT_EQ(assistant.Label3.caption(), title);
        EXPECT_EQ(assistant.Label2.caption(), text);
        EXPECT_EQ(assistant.Command1.enabled(), next);
    }
    void expectFirstStep() { expectStep("Schritt 1:", firstText, true); }
    void expectSecondStep() { expectStep("Schritt 2:", secondText, false); }
    void expectThirdStep() { expectStep("Schritt 3:", thirdText, true); }

    void expectEnded() {
        EXPECT_FALSE(assistant.loaded());
        EXPECT_TRUE(window.loaded());
        EXPECT_EQ(fake::computer().windows, (std::vector<std::string>{"close Form1", "open frmMain"}));
    }

    app::Program program;
    frmMain window{program};
    Form1 assistant{window};
};
