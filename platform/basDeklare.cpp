#include "platform/basDeklare.h"

#include "platform/device_events.h"

#include <utility>

namespace basDeklare {

namespace {

constexpr std::uint32_t destroyMessage = 2;
constexpr std::uint32_t deviceChangeMessage = 0x219;
constexpr std::uintptr_t deviceArrival = 0x8000;
constexpr std::uintptr_t deviceRemoveComplete = 0x8004;

DeviceListener theListener;
platform::WindowProcedure previousProcedure = nullptr;

bool detecting() {
    return theListener.automaticDetection && theListener.automaticDetection();
}

} // namespace

void setDeviceListener(DeviceListener listener) {
    theListener = std::move(listener);
}

void HookWindow(WindowHandle window) {
    previousProcedure = platform::setWindowProcedure(window, WindowProc);
}

void UnhookWindow(WindowHandle window) {
    if (previousProcedure != nullptr) platform::setWindowProcedure(window, previousProcedure);
}

/// What kind of device it was is never asked: a mouse that is plugged in has the drives scanned, too.
std::intptr_t WindowProc(std::intptr_t window, std::uint32_t message, std::uintptr_t wParam,
                         std::intptr_t lParam) {
    if (message == destroyMessage) UnhookWindow(window);
    if (message == deviceChangeMessage && detecting()) {
        if (wParam == deviceArrival) theListener.arrived();
        if (wParam == deviceRemoveComplete) theListener.removed();
    }
    return platform::callWindowProcedure(previousProcedure, window, message, wParam, lParam);
}

} // namespace basDeklare
