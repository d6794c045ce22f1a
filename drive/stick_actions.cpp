#include "drive/stick_actions.h"

#include "base/text.h"
#include "drive/cDrive.h"
#include "platform/basINI.h"
#include "platform/files.h"
#include "platform/program_path.h"
#include "platform/shell.h"
#include "toolkit/message_box.h"
#include "window/main_window.h"

namespace drive {

namespace {

constexpr std::size_t longestLabel = 11; // characters

constexpr const char* refusedLabelToolTip =
    "Der Stick hat diese Bezeichnung nicht angenommen und behält die alte. Vielleicht wird er gerade "
    "benutzt, ist schreibgeschützt, oder sein Dateisystem erlaubt eines der Zeichen nicht.";

bool isFolder(const std::string& path) {
    return (platform::fileAttributes(path).value_or(0) & platform::FileDirectory) != 0;
}

} // namespace

const char* const labelToolTip = "Datenträgerbezeichnung, höchstens 11 Zeichen";

void OpenDir(const cDrive& drive, const std::string& spath) {
    if (drive.mp_PathExists(spath) && isFolder(spath))
        platform::showFolder(drive.mainWindow().handle(), spath);
}

bool SavePath(cDrive& drive) {
    const std::string root = platform::withBackslash(drive.p_GetDriveLetters("0"));
    const std::string path = drive.mainWindow().txtOpenPath.text();
    if (!drive.shownStick() || !basINI::IniWrite(root + "USB.ini", "Open", "Dir", path, drive.shownStick()))
        return false;
    drive.mp_StandardPfad(withoutLeadingBackslash(path));
    return true;
}

std::string withoutLeadingBackslash(std::string path) {
    if (path.starts_with('\\')) path.erase(0, 1);
    return path;
}

/// The choice among several sticks does not shorten the list of drive types, so after it the button does
/// nothing until a scan finds exactly one. This is intended.
void cmdOpen_Click(const cDrive& drive) {
    if (drive.p_GetDT_Count() == 1)
        OpenDir(drive, drive.mainWindow().lblLW.caption() + drive.mp_StandardPfad());
}

void Command1_Click(cDrive& drive) {
    window::MainWindow& window = drive.mainWindow();
    const std::string& label = window.txtDT_Cap.text();
    const std::size_t length = base::characterCount(label);
    if (length > longestLabel) {
        toolkit::messageBox("maximale Länge der Datenträgerbezeichnung ist 11 Zeichen", toolkit::Information,
                            window.caption());
        window.txtDT_Cap.setSelection({longestLabel, length - longestLabel});
        window.txtDT_Cap.setFocus();
        return;
    }
    const bool done = drive.mp_SetDriveName(drive.p_GetDriveLetters("0"), label);
    window.txtDT_Cap.setToolTip(done ? labelToolTip : refusedLabelToolTip);
    if (done) return;
    // No box: a label that is refused holds up nobody. But whoever gave it sees the box ask for another one.
    window.txtDT_Cap.setSelection({0, length});
    window.txtDT_Cap.setFocus();
}

} // namespace drive
