// Drives made out of folders: Wine's mount manager takes them, as winecfg hands them over, at any time.
#pragma once

#include <windows.h>

#include <string>

namespace probe {

/// Makes a folder of the host a drive of a type (DRIVE_REMOVABLE and so on). Throws Failure.
void defineDrive(char letter, ULONG type, const std::string& hostFolder);

void undefineDrive(char letter);

/// Tells a window that drives have arrived or gone (DBT_DEVICEARRIVAL, DBT_DEVICEREMOVECOMPLETE), as Windows
/// tells all of them. Returns when the window has dealt with it, or is busy with it: a dialog may have
/// opened.
void sendVolumeEvent(HWND window, WPARAM event, const std::string& letters);

/// The letters that are in use, in their order.
std::string driveLetters();

} // namespace probe
