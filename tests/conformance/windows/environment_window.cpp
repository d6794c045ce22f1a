#include "tests/conformance/environment_window.h"

#include "tests/conformance/known_difference.h"

#include <windows.h>

#include <dbt.h>

#include <chrono>
#include <stdexcept>
#include <thread>

namespace conformance {

namespace {

constexpr const char* className = "ConformanceDeviceWindow";
constexpr auto patience = std::chrono::seconds(60);
constexpr DWORD pause = 10; // milliseconds
constexpr ULONG driveE = 1U << 4U;

/// As the system does: sent, so that it lies in no queue.
void sendDeviceChange(HWND window, bool arrived) {
    DEV_BROADCAST_VOLUME volume{};
    volume.dbcv_size = sizeof volume;
    volume.dbcv_devicetype = DBT_DEVTYP_VOLUME;
    volume.dbcv_unitmask = driveE;
    SendMessageA(window, WM_DEVICECHANGE, arrived ? DBT_DEVICEARRIVAL : DBT_DEVICEREMOVECOMPLETE,
                 reinterpret_cast<LPARAM>(&volume));
}

} // namespace

struct DeviceWindow::State {
    HWND window = nullptr;
    std::jthread sender;
};

DeviceWindow::DeviceWindow() : state_(std::make_unique<State>()) {
    WNDCLASSA description{};
    description.lpfnWndProc = DefWindowProcA;
    description.hInstance = GetModuleHandleA(nullptr);
    description.lpszClassName = className;
    RegisterClassA(&description); // fails for the second window, which takes the first one's
    state_->window = CreateWindowA(className, "", WS_OVERLAPPED, 0, 0, 10, 10, nullptr, nullptr,
                                   description.hInstance, nullptr);
    if (state_->window == nullptr) throw std::runtime_error("there is no window to be had");
}

DeviceWindow::~DeviceWindow() {
    DestroyWindow(state_->window);
}

std::intptr_t DeviceWindow::handle() const {
    return reinterpret_cast<std::intptr_t>(state_->window);
}

/// From another thread: the message comes when this one lets messages come.
void DeviceWindow::announce(bool arrived) {
    const bool needed = knownDifference(Differs::Wine,
                                        "no window hears of a drive that is defined by a program; the "
                                        "tests send the message themselves",
                                        "seen with Wine 8.0");
    if (needed) state_->sender = std::jthread(sendDeviceChange, state_->window, arrived);
}

bool DeviceWindow::waitFor(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, pause, QS_ALLINPUT);
        for (MSG message; PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != FALSE;)
            DispatchMessageA(&message);
    }
    return true;
}

} // namespace conformance
