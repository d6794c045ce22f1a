// What the machine knows of drives, and what its windows are told of them.
#pragma once

#include <windows.h>

#include <string>

namespace probe {

/// Tells a window that drives have arrived or gone (DBT_DEVICEARRIVAL, DBT_DEVICEREMOVECOMPLETE), as Windows
/// tells all of them. Returns when the window has dealt with it, or is busy with it: a dialog may have
/// opened.
void sendVolumeEvent(HWND window, WPARAM event, const std::string& letters);

/// The letters that are in use, in their order.
std::string driveLetters();

} // namespace probe
