// The system's colours, those of high contrast among them, and what is made of them.
#pragma once

#include "toolkit/color.h"

#include <windows.h>

namespace toolkit::win32 {

inline COLORREF toNative(Color color) {
    return RGB(color.red, color.green, color.blue);
}

/// The system's colour of that index.
Color systemColor(int index);

/// Of texts on a dialog that say something although their part is disabled.
COLORREF disabledTextColor();

/// Of the frame around the part that has the keyboard.
COLORREF focusColor();

} // namespace toolkit::win32
