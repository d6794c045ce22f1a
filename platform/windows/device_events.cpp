#include "platform/device_events.h"

#include "platform/blocking.h"

#include <windows.h>

#include <dbt.h>

#include <map>
#include <type_traits>
#include <utility>

namespace platform {

namespace {

// A WindowProcedure and a WNDPROC are called in the same way; only the handle's type has another name.
static_assert(std::is_same_v<WindowProcedure, std::intptr_t (*)(std::intptr_t, UINT, WPARAM, LPARAM)>);
static_assert(std::is_same_v<LRESULT, std::intptr_t>);
static_assert(sizeof(HWND) == sizeof(std::intptr_t));
static_assert(destroyMessage == WM_DESTROY && deviceChangeMessage == WM_DEVICECHANGE);
static_assert(deviceArrival == DBT_DEVICEARRIVAL && deviceRemoveComplete == DBT_DEVICEREMOVECOMPLETE);

/// A window whose procedure has been exchanged.
struct Hook {
    WindowProcedure procedure = nullptr; ///< the one that is in charge
    WindowProcedure first = nullptr;     ///< the window's own
};

struct State {
    std::map<std::intptr_t, Hook> hooks;
    DeviceEventDelivery delivery;
    bool passedOn = false; ///< the message being delivered has reached the previous procedure
};

State& state() {
    static State theState;
    return theState;
}

HWND windowOf(std::intptr_t window) {
    return reinterpret_cast<HWND>(window);
}

WNDPROC native(WindowProcedure procedure) {
    return reinterpret_cast<WNDPROC>(reinterpret_cast<void*>(procedure));
}

WindowProcedure portable(LONG_PTR procedure) {
    return reinterpret_cast<WindowProcedure>(procedure);
}

/// Nothing that a procedure throws may run through the system's own frames, so such a message goes through
/// the delivery, which catches it. The window's own procedure gets every message, also one that was not
/// delivered.
std::intptr_t deliver(const Hook& hook, std::intptr_t window, std::uint32_t message, std::uintptr_t wParam,
                      std::intptr_t lParam) {
    const DeviceEventDelivery delivery = state().delivery; // it may be exchanged meanwhile
    if (isInBlockingCall()) {
        // It comes once more, when that is over. What the message points to is gone by then, and nobody looks
        // at it.
        delivery([window, message, wParam] { sendWindowMessage(window, message, wParam, 0); });
        return callWindowProcedure(hook.first, window, message, wParam, lParam);
    }
    std::intptr_t result = 0;
    const bool outer = std::exchange(state().passedOn, false);
    delivery([&] { result = hook.procedure(window, message, wParam, lParam); });
    const bool passedOn = std::exchange(state().passedOn, outer);
    return passedOn ? result : callWindowProcedure(hook.first, window, message, wParam, lParam);
}

LRESULT CALLBACK hookProcedure(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) {
    const auto window = reinterpret_cast<std::intptr_t>(handle);
    const auto found = state().hooks.find(window);
    if (found == state().hooks.end()) return DefWindowProcA(handle, message, wParam, lParam);
    const Hook hook = found->second; // the procedure may take itself off
    if (message == WM_DEVICECHANGE && state().delivery) return deliver(hook, window, message, wParam, lParam);
    return hook.procedure(window, message, wParam, lParam);
}

LONG_PTR exchange(std::intptr_t window, WNDPROC next) {
    return SetWindowLongPtrA(windowOf(window), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(next));
}

} // namespace

WindowProcedure setWindowProcedure(std::intptr_t window, WindowProcedure next) {
    auto& hooks = state().hooks;
    const auto found = hooks.find(window);
    if (found != hooks.end()) {
        const Hook hook = found->second;
        found->second.procedure = next;
        if (next == hook.first) {
            exchange(window, native(next));
            hooks.erase(found);
        }
        return hook.procedure;
    }
    // Putting the window's own procedure back a second time changes nothing.
    const LONG_PTR current = GetWindowLongPtrA(windowOf(window), GWLP_WNDPROC);
    if (current == 0) return portable(reinterpret_cast<LONG_PTR>(&DefWindowProcA));
    if (portable(current) == next) return next;
    hooks[window] = {next, portable(current)};
    hooks[window].first = portable(exchange(window, hookProcedure));
    return hooks[window].first;
}

std::intptr_t callWindowProcedure(WindowProcedure previous, std::intptr_t window, std::uint32_t message,
                                  std::uintptr_t wParam, std::intptr_t lParam) {
    state().passedOn = true;
    return CallWindowProcA(native(previous), windowOf(window), message, wParam, lParam);
}

std::intptr_t sendWindowMessage(std::intptr_t window, std::uint32_t message, std::uintptr_t wParam,
                                std::intptr_t lParam) {
    return SendMessageA(windowOf(window), message, wParam, lParam);
}

void setDeviceEventDelivery(DeviceEventDelivery delivery) {
    state().delivery = std::move(delivery);
}

} // namespace platform
