// The window procedures that the program puts in front of its windows' own.
#pragma once

#include <cstdint>
#include <functional>

namespace basDeklare {

/// Handle of a window. Windows: `HWND`.
using WindowHandle = std::intptr_t;

/// What the main window's procedure does about devices. All three are called on the user-interface thread.
struct DeviceListener {
    std::function<bool()> automaticDetection; ///< device messages count only while it is true
    std::function<void()> arrived;
    std::function<void()> removed;
};

void setDeviceListener(DeviceListener listener);

/// Puts WindowProc in front of the window's procedure. Windows: `SetWindowLongA`, GWL_WNDPROC.
void HookWindow(WindowHandle window);

/// Puts the previous procedure back; a second time is harmless.
void UnhookWindow(WindowHandle window);

/// Passes every message on to the previous procedure, and returns its result.
std::intptr_t WindowProc(std::intptr_t window, std::uint32_t message, std::uintptr_t wParam,
                         std::intptr_t lParam);

} // namespace basDeklare
