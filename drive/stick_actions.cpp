#include "drive/stick_actions.h"

#include "app/frmMain.h"
#include "drive/cDrive.h"
#include "platform/basINI.h"
#include "platform/files.h"
#include "platform/program_path.h"
#include "platform/shell.h"

namespace drive {

namespace {

bool isFolder(const std::string& path) {
    return (platform::fileAttributes(path).value_or(0) & platform::FileDirectory) != 0;
}

} // namespace

void OpenDir(frmMain& window, const std::string& spath) {
    if (window.program().Drive->mp_PathExists(spath) && isFolder(spath))
        platform::showFolder(window.handle(), spath);
}

bool SavePath(frmMain& window) {
    cDrive& drive = *window.program().Drive;
    const std::string root = platform::withBackslash(drive.p_GetDriveLetters("0"));
    const std::string path = window.txtOpenPath.text();
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
void cmdOpen_Click(frmMain& window) {
    const cDrive& drive = *window.program().Drive;
    if (drive.p_GetDT_Count() == 1) OpenDir(window, window.lblLW.caption() + drive.mp_StandardPfad());
}

} // namespace drive
