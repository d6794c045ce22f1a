#include "drive/device_monitor.h"

#include "drive/cDrive.h"
#include "drive/stick_actions.h"
#include "toolkit/picture.h"

namespace drive {

void deviceArrived(cDrive& drive, bool open) {
    drive.showTrayIcon(toolkit::stickIcon);
    drive.scanAndChoose();
    if (open) OpenDir(drive, drive.p_GetDriveLetters("0") + drive.mp_StandardPfad());
}

void deviceRemoved(cDrive& drive) {
    drive.RemoveUSB_Info();
    drive.showTrayIcon(toolkit::noStickIcon);
}

} // namespace drive
