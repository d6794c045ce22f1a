#include "toolkit/win32/placement.h"

#include <algorithm>

namespace toolkit::win32 {

namespace {

LONG placed(LONG ownerLow, LONG ownerHigh, LONG size, LONG screenLow, LONG screenHigh) {
    const LONG centred = (ownerLow + ownerHigh - size) / 2;
    return std::max(screenLow, std::min(centred, screenHigh - size));
}

} // namespace

void centreOver(HWND window, HWND owner) {
    RECT own{};
    RECT other{};
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    if (GetMonitorInfoW(MonitorFromWindow(owner, MONITOR_DEFAULTTONEAREST), &monitor) == FALSE) return;
    GetWindowRect(window, &own);
    GetWindowRect(owner, &other);
    const RECT& screen = monitor.rcWork;
    SetWindowPos(window, nullptr,
                 placed(other.left, other.right, own.right - own.left, screen.left, screen.right),
                 placed(other.top, other.bottom, own.bottom - own.top, screen.top, screen.bottom), 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

int scaled(HWND window, int pixels) {
    return MulDiv(pixels, static_cast<int>(GetDpiForWindow(window)), USER_DEFAULT_SCREEN_DPI);
}

} // namespace toolkit::win32
