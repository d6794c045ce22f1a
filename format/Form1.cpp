#include "format/Form1.h"

#include "base/lines.h"
#include "format/admin_check.h"
#include "format/disk_text.h"
#include "format/process_runner.h"
#include "platform/program_path.h"
#include "platform/sandbox.h"
#include "platform/volumes.h"
#include "toolkit/message_box.h"
#include "toolkit/scoped_flag.h"

using base::joinLines;
using namespace std::chrono_literals;

namespace {

constexpr const char* firstStep = "Schritt 1:";
constexpr const char* secondStep = "Schritt 2:";
constexpr const char* thirdStep = "Schritt 3:";

constexpr const char* firstInstructions = "Vergewisseren Sie sich dass die USB-Platte NICHT am PC "
                                          "angeschlossen ist und drücken Sie dann auf WEITER.";

constexpr const char* switchedOff = "Im Flatpak ist der Assistent abgeschaltet: Zum Formatieren dient das "
                                    "Paket für Debian und Ubuntu oder der Ordner des Programms.";

std::string secondInstructions() {
    return joinLines(
        {"Schließen Sie jetzt die USB-Festplatte an.", "",
         "Falls die Festplatte nicht gefunden wird, schließen Sie die Platte nochmal ab und gehen einen "
         "Schritt ZURÜCK."});
}

std::string thirdInstructions(const std::string& drive) {
    return joinLines({"USB-Festplatte gefunden!", "Laufwerksbuchstabe: " + drive});
}

constexpr const char* refusalTitle = "Keine Administrator-Rechte !";

std::string refusal() {
    return joinLines({"Zum Formatieren benötigen Sie Administrator-Rechte",
                      "Melden Sie sich bei Windows als Administrator an, oder verständigen Sie Ihren "
                      "Systemadministrator!"});
}

constexpr const char* questionTitle = "Wollen Sie formatieren ?";

std::string question(const std::string& drive) {
    return joinLines({"ACHTUNG: ALLE DATEN AUF DER USB-DISK WERDEN GELÖSCHT:", "",
                      "Wollen Sie wirklich die Festplatte " + drive + " formatieren?", "",
                      "Für Datenverlust wird keine Haftung übernommen.", "", "Formatieren mit OK ?"});
}

std::string rootOf(const std::string& drive) {
    return drive + '\\';
}

constexpr const char* cancelQuestion = "Die Festplatte wird gerade formatiert. Wirklich abbrechen?";

} // namespace

Form1::Form1(toolkit::Form& owner) : Form("Form1"), Timer1("Timer1", 4000ms, true), owner_(owner) {
    for (Control* control : std::initializer_list<Control*>{&Label1, &Label2, &Label3, &lblDisk, &prgFormat,
                                                            &Command1, &Command2, &Timer1})
        add(*control);
    onLoad = [this] { Form_Load(); };
    onCloseRequested = [this] { return mayClose(); };
    onUnload = [this] { closed_ = true; };
    Command1.onClick = [this] { Command1_Click(); };
    Command2.onClick = [this] { Command2_Click(); };
    Timer1.onTimer = [this] { Timer1_Timer(); };
    setCaption("Fat32 Format Assistent");
    Label1.setCaption("Fat 32 Format Assistent:");
    Command1.setCaption("WEITER >>>");
    Command2.setCaption("<<< Zurück");
    setDefaultButton(Command1);
}

/// The window may be loaded again after it was closed; its buttons are then as they were the first time.
void Form1::Form_Load() {
    showFirstStep();
    Command2.setEnabled(true);
}

void Form1::Command2_Click() {
    showFirstStep();
    Command2.setEnabled(false);
}

void Form1::Command1_Click() {
    if (!format::IsUserAdmin()) {
        toolkit::messageBox(refusal(), toolkit::Critical, refusalTitle);
        if (mayClose()) endAssistant();
        return;
    }
    if (state_ == WithoutDisk)
        beginWaiting();
    else if (state_ == DiskFound && !formatting_ && !asking_)
        askAndFormat();
}

/// No disk is looked for behind the question, which is about the one that it names. One that is being
/// formatted may well be another one by now.
void Form1::Timer1_Timer() {
    if (asking_) return;
    if (state_ == DiskFound && !formatting_ && !isDiskThere()) {
        waitForDisk();
        return;
    }
    if (state_ != WaitingForDisk) return;
    drive_ = snapshot_.newDrive();
    if (drive_.empty()) return;
    disk_ = platform::driveIdentity(rootOf(drive_));
    if (!disk_) return; // it is not ready yet
    // Asked before anything is shown, since it takes time.
    const std::string disk = format::diskText(platform::diskDescription(rootOf(drive_)));
    state_ = DiskFound;
    Label3.setCaption(thirdStep);
    Label2.setCaption(thirdInstructions(drive_));
    lblDisk.setCaption(disk);
    Command1.setEnabled(true);
}

/// A sandbox has no disk to offer, so there it goes no further.
void Form1::showFirstStep() {
    const bool possible = !platform::isSandboxed();
    state_ = WithoutDisk;
    Label3.setCaption(firstStep);
    Label2.setCaption(possible ? firstInstructions : switchedOff);
    lblDisk.setCaption({});
    Command1.setEnabled(possible);
}

void Form1::beginWaiting() {
    snapshot_.take();
    waitForDisk();
}

/// The drives noted before stay so: whichever disk comes now, also the one that has just gone, is a new one.
void Form1::waitForDisk() {
    state_ = WaitingForDisk;
    Label3.setCaption(secondStep);
    Label2.setCaption(secondInstructions());
    lblDisk.setCaption({});
    Command1.setEnabled(false);
    Command2.setEnabled(true);
}

/// Not another one that has got its letter.
bool Form1::isDiskThere() const {
    return disk_ && platform::driveType(rootOf(drive_)) == platform::DriveFixed &&
           platform::driveIdentity(rootOf(drive_)) == disk_;
}

bool Form1::confirmFormat() {
    const toolkit::ScopedFlag asking(asking_);
    const int answer = toolkit::messageBox(question(drive_), toolkit::OkCancel, questionTitle);
    return answer == toolkit::Ok && loaded();
}

/// The answer may take its time, in which the disk can be exchanged.
void Form1::askAndFormat() {
    if (isDiskThere()) {
        if (!confirmFormat() || state_ != DiskFound) return;
        if (isDiskThere()) return formatDrive();
    }
    waitForDisk();
}

/// Events go on while the formatter runs. WEITER then starts no second one, which would write to the same
/// disk, and closing the assistant ends the formatter, also when it has been opened anew since. A process
/// that the formatter has started for its rights writes nothing then, or ends what it has begun to write.
void Form1::formatDrive() {
    std::string output;
    closed_ = false;
    {
        const toolkit::ScopedFlag running(formatting_);
        prgFormat.showBusy("Wird formatiert – Platte nicht abziehen");
        output = Module1::runConsoleProgram(platform::programPath() + "fat32format.exe -c64 " + drive_,
                                            [this] { return !closed_; });
    }
    prgFormat.clear();
    const bool done = output.find("Done") != std::string::npos;
    toolkit::messageBox(done ? "Formatierung abgeschlossen." : "Formatierung fehlgeschlagen.",
                        toolkit::OkOnly);
    endAssistant();
}

/// A disk that is half formatted is of no use, so nobody gets there by a slip. The formatter goes on behind
/// the question.
bool Form1::mayClose() {
    return !formatting_ || toolkit::messageBox(cancelQuestion, toolkit::NoOrYesExclamation) == toolkit::Yes;
}

void Form1::endAssistant() {
    unload();
    owner_.show();
}
