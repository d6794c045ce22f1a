// What the main window shows of the stick.

#include "drive/cDrive.h"
#include "drive/stick_actions.h"
#include "platform/cTray.h"
#include "platform/profile.h"
#include "platform/program_path.h"
#include "toolkit/picture.h"
#include "window/main_window.h"
#include "window/reasons.h"

namespace {

/// Panel 1 of the status bar, with a picture from the program folder.
void showStickState(window::MainWindow& window, const char* picture, const char* text, bool enabled,
                    const std::string& toolTip) {
    toolkit::StatusPanel& panel = window.StatusBar1.panel(1);
    panel.setPicture(toolkit::loadPicture(platform::programPath() + picture));
    panel.setText(text);
    panel.setEnabled(enabled);
    panel.setToolTip(toolTip);
}

} // namespace

void cDrive::SetUSB_Info() {
    const std::string root = p_GetDriveLetters("0");
    noteShownStick(platform::driveIdentity(root));
    GetDriveCapacity();
    window_.lblLW.setCaption(root);
    showStandardPath(root);
    window_.allowUpdate();
    window_.cmdChoose.setCaption("Starte Update");
    showStickState(window_, "file.bmp", "USB Stick", true, "USB-Stick gefunden.");
    window_.txtDT_Cap.setText(mp_GetDriveName(root));
    window_.txtDT_Cap.setToolTip(drive::labelToolTip);
    window_.txtFAT.setText(mp_FileSystem());
    showTrayIcon(toolkit::stickIcon);
}

void cDrive::noteShownStick(const platform::DriveIdentity& stick) {
    if (shownStick_ != stick) window_.stickChanged();
    shownStick_ = stick;
}

/// Takes the value that the last evaluation with a profile file read; a stick chosen in the dialog has had
/// none read in this pass. This is intended. A file that is missing or cannot be read leaves the path alone.
void cDrive::showStandardPath(const std::string& root) {
    const std::string file = root + "USB.ini";
    if (!mp_PathExists(file) || !platform::profileIsReadable(file)) return;
    const std::string path = drive::withoutLeadingBackslash(profileValue_);
    mp_StandardPfad(path);
    window_.txtOpenPath.setText(path);
}

void cDrive::RemoveUSB_Info() {
    noteShownStick({});
    window_.txtOpenPath.setText("");
    mp_StandardPfad("");
    window_.txtFAT.setText("");
    window_.txtDT_Cap.setText("");
    window_.txtDT_Cap.setToolTip(drive::labelToolTip);
    clearCapacity();
    window_.refuseUpdate(window::noStick());
    window_.cmdChoose.setCaption("USB Stick einstecken");
    showStickState(window_, "nofile.bmp", "No Stick", false, window::noStick());
}

void cDrive::showTrayIcon(int icon) {
    const base::Picture picture = toolkit::iconResource(icon);
    tray_.TrayIcon_Icon(picture);
    tray_.TrayIcon_Modify(window_.caption(), picture->handle());
}
