// The program as a Windows application: its message loop, its pump, its end.
#include "toolkit/backend.h"
#include "toolkit/dispatch.h"

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

/// From here on libraries come from the system's folder: never from the program's, where a download may have
/// put one, and never from the current one.
/// https://learn.microsoft.com/windows/win32/api/libloaderapi/nf-libloaderapi-setdefaultdlldirectories
void trustSystemLibrariesOnly() {
    SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
}

void loadControlClasses() {
    INITCOMMONCONTROLSEX classes{};
    classes.dwSize = sizeof classes;
    classes.dwICC = ICC_STANDARD_CLASSES | ICC_LISTVIEW_CLASSES | ICC_BAR_CLASSES;
    InitCommonControlsEx(&classes);
}

} // namespace

Ending run(char* /*program*/, const std::function<void()>& start) {
    trustSystemLibrariesOnly();
    resetEnding();
    win32::startLoops();
    const ComApartment apartment;
    loadControlClasses();
    platform::setDeviceEventDelivery([](const std::function<void()>& message) { dispatch(message); });
    dispatch(start);
    win32::loopUntil([] { return false; });
    win32::releaseAllWindows();
    return ending();
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
