#include "toolkit/win32/colors.h"

#include "toolkit/contrast.h"

namespace toolkit::win32 {

namespace {

COLORREF seenOnDialog(int index, double least) {
    const Color seen =
        readable(systemColor(index), systemColor(COLOR_BTNTEXT), {systemColor(COLOR_BTNFACE)}, least);
    return toNative(seen);
}

} // namespace

Color systemColor(int index) {
    const COLORREF color = GetSysColor(index);
    return {GetRValue(color), GetGValue(color), GetBValue(color)};
}

COLORREF disabledTextColor() {
    return seenOnDialog(COLOR_GRAYTEXT, textContrast);
}

COLORREF focusColor() {
    return seenOnDialog(COLOR_HIGHLIGHT, markContrast);
}

} // namespace toolkit::win32
