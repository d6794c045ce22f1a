#include "drive/device_monitor.h"

#include "app/frmMain.h"
#include "drive/cDrive.h"
#include "drive/stick_actions.h"
#include "drive/stick_icons.h"
#include "toolkit/picture.h"

namespace drive {

void deviceArrived(app::Program& program) {
    cDrive& drive = *program.Drive;
    showTrayIcon(program, toolkit::stickIcon);
    drive.mp_GetDriveTyps();
    drive.ChooseUSB_Info(drive.p_GetDriveLetters("0"));
    if (program.OpenOnArrival)
        OpenDir(*program.MainWindow, drive.p_GetDriveLetters("0") + drive.mp_StandardPfad());
}

void deviceRemoved(app::Program& program) {
    program.Drive->RemoveUSB_Info();
    showTrayIcon(program, toolkit::noStickIcon);
}

} // namespace drive
