// Messages about devices, as a window's procedure receives them. A drive that arrives, or goes, is the
// message WM_DEVICECHANGE with DBT_DEVICEARRIVAL or DBT_DEVICEREMOVECOMPLETE; one message may stand for
// several drives, and it comes when the drives can be used.
// https://learn.microsoft.com/windows/win32/devio/wm-devicechange
#pragma once

#include <cstdint>
#include <functional>

namespace platform {

// The messages that count here, and what the first parameter of the second one says. Their values are those
// of Windows on every system.
constexpr std::uint32_t destroyMessage = 2;             ///< the last one; Windows: WM_DESTROY
constexpr std::uint32_t deviceChangeMessage = 0x219;    ///< Windows: WM_DEVICECHANGE
constexpr std::uintptr_t deviceArrival = 0x8000;        ///< Windows: DBT_DEVICEARRIVAL
constexpr std::uintptr_t deviceRemoveComplete = 0x8004; ///< Windows: DBT_DEVICEREMOVECOMPLETE

/// A window's procedure. Windows: `WNDPROC`.
using WindowProcedure = std::intptr_t (*)(std::intptr_t window, std::uint32_t message, std::uintptr_t wParam,
                                          std::intptr_t lParam);

/// Makes `next` the window's procedure and returns the previous one, which is never null. Devices are watched
/// only while a window has a procedure other than its first one. Windows: `SetWindowLongA`, GWL_WNDPROC.
WindowProcedure setWindowProcedure(std::intptr_t window, WindowProcedure next);

/// Windows: `CallWindowProcA`.
std::intptr_t callWindowProcedure(WindowProcedure previous, std::intptr_t window, std::uint32_t message,
                                  std::uintptr_t wParam, std::intptr_t lParam);

/// Calls the window's procedure. Windows: `SendMessageA`.
std::intptr_t sendWindowMessage(std::intptr_t window, std::uint32_t message, std::uintptr_t wParam,
                                std::intptr_t lParam);

/// What a message about a device is handed to, to be called from the event loop on the user-interface thread,
/// at once or later; without one it is called as it is. Whatever a window's procedure throws has to be caught
/// there. A look at the drives that may find something to tell is handed to it as well, and the message then
/// comes inside of it.
using DeviceEventDelivery = std::function<void(const std::function<void()>& message)>;
void setDeviceEventDelivery(DeviceEventDelivery delivery);

} // namespace platform
