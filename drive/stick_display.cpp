// What the main window shows of the stick.

#include "app/frmMain.h"
#include "drive/cDrive.h"
#include "drive/stick_actions.h"
#include "drive/stick_icons.h"
#include "platform/cTray.h"
#include "platform/profile.h"
#include "platform/program_path.h"
#include "toolkit/picture.h"

namespace {

/// Panel 1 of the status bar, with a picture from the program folder.
void showStickState(frmMain& window, const char* picture, const char* text, bool enabled,
                    const std::string& toolTip) {
    toolkit::StatusPanel& panel = window.StatusBar1.panel(1);
    panel.setPicture(toolkit::loadPicture(platform::programPath() + picture));
    panel.setText(text);
    panel.setEnabled(enabled);
    panel.setToolTip(toolTip);
}

/// Where the sticks cannot be seen at all, plugging one in helps nobody.
std::string noStickToolTip() {
    const std::string missing = platform::missingDriveService();
    return "Kein USB-Stick gefunden. Schließen Sie den USB-Stick am PC an." +
           (missing.empty() ? missing : "\n" + missing);
}

} // namespace

void cDrive::SetUSB_Info() {
    frmMain& window = *program_.MainWindow;
    const std::string root = p_GetDriveLetters("0");
    shownStick_ = platform::driveIdentity(root);
    GetDriveCapacity();
    window.lblLW.setCaption(root);
    showStandardPath(root);
    window.cmdChoose.setEnabled(true);
    window.cmdChoose.setCaption("Starte Update");
    showStickState(window, "file.bmp", "USB Stick", true, "USB-Stick gefunden.");
    window.txtDT_Cap.setText(mp_GetDriveName(root));
    window.txtDT_Cap.setToolTip(drive::labelToolTip);
    window.txtFAT.setText(mp_FileSystem());
    drive::showTrayIcon(program_, toolkit::stickIcon);
}

/// Takes the value that the last evaluation with a profile file read; a stick chosen in the dialog has had
/// none read in this pass. This is intended. A file that is missing or cannot be read leaves the path alone.
void cDrive::showStandardPath(const std::string& root) {
    const std::string file = root + "USB.ini";
    if (!mp_PathExists(file) || !platform::profileIsReadable(file)) return;
    const std::string path = drive::withoutLeadingBackslash(profileValue_);
    mp_StandardPfad(path);
    program_.MainWindow->txtOpenPath.setText(path);
}

void cDrive::RemoveUSB_Info() {
    frmMain& window = *program_.MainWindow;
    shownStick_ = {};
    window.txtOpenPath.setText("");
    mp_StandardPfad("");
    window.txtFAT.setText("");
    window.txtDT_Cap.setText("");
    window.txtDT_Cap.setToolTip(drive::labelToolTip);
    clearCapacity();
    window.cmdChoose.setEnabled(false);
    window.cmdChoose.setCaption("USB Stick einstecken");
    showStickState(window, "nofile.bmp", "No Stick", false, noStickToolTip());
}

void drive::showTrayIcon(app::Program& program, int icon) {
    const toolkit::Picture picture = toolkit::iconResource(icon);
    program.Tray->TrayIcon_Icon(picture);
    program.Tray->TrayIcon_Modify(program.MainWindow->caption(), picture->handle());
}
