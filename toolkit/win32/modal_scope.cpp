#include "toolkit/win32/modal_scope.h"

#include <utility>

namespace toolkit::win32 {

namespace {

BOOL CALLBACK collect(HWND window, LPARAM windows) noexcept {
    if (IsWindowVisible(window) != FALSE && IsWindowEnabled(window) != FALSE)
        reinterpret_cast<std::vector<HWND>*>(windows)->push_back(window);
    return TRUE;
}

} // namespace

ModalScope::ModalScope(HWND modal) {
    EnumThreadWindows(GetCurrentThreadId(), collect, reinterpret_cast<LPARAM>(&deaf_));
    std::erase(deaf_, modal);
    for (HWND window : deaf_)
        EnableWindow(window, FALSE);
}

void ModalScope::end() {
    for (HWND window : std::exchange(deaf_, {}))
        EnableWindow(window, TRUE);
}

} // namespace toolkit::win32
