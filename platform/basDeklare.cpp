#include "platform/basDeklare.h"

#include "platform/device_events.h"

#include <utility>

namespace basDeklare {

namespace {

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
    if (message == platform::destroyMessage) UnhookWindow(window);
    if (message == platform::deviceChangeMessage && detecting()) {
        if (wParam == platform::deviceArrival) theListener.arrived();
        if (wParam == platform::deviceRemoveComplete) theListener.removed();
    }
    return platform::callWindowProcedure(previousProcedure, window, message, wParam, lParam);
}

} // namespace basDeklare
