#include "toolkit/win32/placement.h"

#include <algorithm>

namespace toolkit::win32 {

namespace {

LONG placed(LONG ownerLow, LONG ownerHigh, LONG size, LONG screenLow, LONG screenHigh) {
    const LONG centred = (ownerLow + ownerHigh - size) / 2;
    return std::max(screenLow, std::min(centred, screenHigh - size));
}

/// Without the desktop's bars; empty when there is no screen.
RECT screenOf(HWND window) {
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    GetMonitorInfoW(MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &monitor);
    return monitor.rcWork;
}

} // namespace

bool fitsScreen(HWND window) {
    const RECT screen = screenOf(window);
    RECT own{};
    GetWindowRect(window, &own);
    return own.right - own.left <= screen.right - screen.left &&
           own.bottom - own.top <= screen.bottom - screen.top;
}

void centreOver(HWND window, HWND owner) {
    RECT own{};
    RECT other{};
    const RECT screen = screenOf(owner);
    GetWindowRect(window, &own);
    // An icon has no place on the screen.
    if (IsIconic(owner) != FALSE)
        other = screen;
    else
        GetWindowRect(owner, &other);
    SetWindowPos(window, nullptr,
                 placed(other.left, other.right, own.right - own.left, screen.left, screen.right),
                 placed(other.top, other.bottom, own.bottom - own.top, screen.top, screen.bottom), 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

int scaled(HWND window, int pixels) {
    return MulDiv(pixels, static_cast<int>(GetDpiForWindow(window)), USER_DEFAULT_SCREEN_DPI);
}

RECT placeIn(HWND dialog, HWND part) {
    RECT place{};
    GetWindowRect(part, &place);
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&place), 2);
    return place;
}

} // namespace toolkit::win32
