#pragma once

#include <windows.h>

namespace toolkit::win32 {

/// Puts a window in the middle of its owner, but not over the edge of the screen.
void centreOver(HWND window, HWND owner);

/// Is there room for the window on its screen, beside the desktop's bars?
bool fitsScreen(HWND window);

/// Where a part is, in its dialog's coordinates.
RECT placeIn(HWND dialog, HWND part);

/// Figures of the templates' resolution (96 a inch) at a window's own.
int scaled(HWND window, int pixels);

} // namespace toolkit::win32
