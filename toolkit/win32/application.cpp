// The program as a Windows application: its message loop, its pump, its end.
#include "toolkit/backend.h"
#include "toolkit/dispatch.h"
#include "toolkit/held_events.h"
#include "toolkit/wait.h"
#include "toolkit/worker.h"

#include "platform/blocking.h"
#include "platform/device_events.h"
#include "toolkit/win32/form.h"
#include "toolkit/win32/message_loop.h"

#include <windows.h>

#include <commctrl.h>
#include <objbase.h>

#include <chrono>

namespace toolkit {

namespace {

/// What pictures, the shell and the directory service need.
class ComApartment {
public:
    ComApartment() : result_(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE)) {}
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
    ~ComApartment() {
        if (SUCCEEDED(result_)) CoUninitialize();
    }

private:
    HRESULT result_;
};

/// Blocking calls of the services leave the window alive as long as there is an event loop.
class LivingWindow {
public:
    LivingWindow() { platform::setBlockingCallRunner(waitPainting); }
    LivingWindow(const LivingWindow&) = delete;
    LivingWindow& operator=(const LivingWindow&) = delete;
    ~LivingWindow() {
        platform::setBlockingCallRunner({});
        endWorker();
    }
};

/// From here on libraries come from the system's folder: never from the program's, where a download may have
/// put one, and never from the current one.
/// https://learn.microsoft.com/windows/win32/api/libloaderapi/nf-libloaderapi-setdefaultdlldirectories
void trustSystemLibrariesOnly() {
    SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
}

void loadControlClasses() {
    INITCOMMONCONTROLSEX classes{};
    classes.dwSize = sizeof classes;
    classes.dwICC = ICC_STANDARD_CLASSES | ICC_LISTVIEW_CLASSES | ICC_BAR_CLASSES | ICC_PROGRESS_CLASS;
    InitCommonControlsEx(&classes);
}

} // namespace

Ending run(char* /*program*/, const std::function<void()>& start) {
    trustSystemLibrariesOnly();
    resetEnding();
    win32::startLoops();
    const ComApartment apartment;
    loadControlClasses();
    const LivingWindow livingWindow;
    platform::setDeviceEventDelivery([](const std::function<void()>& message) { dispatch(message); });
    dispatch(start);
    win32::loopUntil([] { return false; });
    win32::releaseAllWindows();
    return ending();
}

void backend::paintPending(std::chrono::milliseconds longest) {
    win32::handlePaintingOnly(longest);
}

void backend::wakeUp() {
    win32::endPainting();
}

/// A timer gets through every loop of the system's own.
void backend::handleHeldEventsSoon() {
    static UINT_PTR timer = 0;
    timer = SetTimer(nullptr, timer, USER_TIMER_MINIMUM, [](HWND, UINT, UINT_PTR number, DWORD) {
        if (eventsAreHeld()) return;
        KillTimer(nullptr, number);
        timer = 0;
        handleHeldEvents();
    });
}

void backend::pumpEvents(std::chrono::milliseconds longest) {
    win32::handlePending(longest);
}

std::chrono::steady_clock::time_point backend::now() {
    return std::chrono::steady_clock::now();
}

void backend::quit() {
    win32::endLoops();
}

} // namespace toolkit
