#include "platform/notification.h"

#include "platform/windows/wide_text.h"

#include <windows.h>

#include <shellapi.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <string>

namespace platform {

namespace {

using windows::wide;

constexpr UINT iconMessage = WM_APP + 1;
constexpr const wchar_t* className = L"OrvantaNotification";

/// What does not fit is cut.
template <class Field>
void store(std::wstring_view text, Field& field) {
    *std::copy_n(text.begin(), std::min(text.size(), std::size(field) - 1), std::begin(field)) = L'\0';
}

HICON programIcon() {
    std::array<wchar_t, MAX_PATH> file{};
    GetModuleFileNameW(nullptr, file.data(), static_cast<DWORD>(file.size()));
    static HICON const icon = ExtractIconW(GetModuleHandleW(nullptr), file.data(), 0);
    return icon;
}

/// An icon of its own, beside the tray's, for which a window that nobody sees gets the messages.
class Notification {
public:
    Notification() = default;
    Notification(const Notification&) = delete;
    Notification& operator=(const Notification&) = delete;
    ~Notification() { remove(); }

    bool show(HWND about, std::string_view title, std::string_view text) {
        remove();
        about_ = about;
        data_ = {};
        data_.cbSize = sizeof data_;
        data_.hWnd = messageWindow();
        data_.uID = 1;
        data_.uFlags = NIF_ICON | NIF_INFO | NIF_MESSAGE;
        data_.uCallbackMessage = iconMessage;
        data_.hIcon = programIcon();
        data_.dwInfoFlags = NIIF_INFO;
        store(wide(title), data_.szInfoTitle);
        store(wide(text), data_.szInfo);
        shown_ = Shell_NotifyIconW(NIM_ADD, &data_) != FALSE;
        return shown_;
    }

    void remove() {
        if (shown_) Shell_NotifyIconW(NIM_DELETE, &data_);
        shown_ = false;
    }

    void received(UINT event) {
        if (event == NIN_BALLOONUSERCLICK) bringToFront();
        if (event == NIN_BALLOONUSERCLICK || event == NIN_BALLOONTIMEOUT || event == NIN_BALLOONHIDE)
            remove();
    }

private:
    void bringToFront() const {
        if (IsIconic(about_) != FALSE) ShowWindow(about_, SW_RESTORE);
        SetForegroundWindow(about_);
    }

    static HWND messageWindow();

    NOTIFYICONDATAW data_{};
    HWND about_ = nullptr;
    bool shown_ = false;
};

Notification& notification() {
    static Notification one;
    return one;
}

LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    if (message != iconMessage) return DefWindowProcW(window, message, wParam, lParam);
    notification().received(LOWORD(lParam));
    return 0;
}

HWND Notification::messageWindow() {
    static HWND const window = [] {
        WNDCLASSEXW description{};
        description.cbSize = sizeof description;
        description.lpfnWndProc = procedure;
        description.hInstance = GetModuleHandleW(nullptr);
        description.lpszClassName = className;
        RegisterClassExW(&description);
        return CreateWindowExW(0, className, nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                               GetModuleHandleW(nullptr), nullptr);
    }();
    return window;
}

} // namespace

bool showNotification(std::intptr_t window, std::string_view title, std::string_view text) {
    return notification().show(reinterpret_cast<HWND>(window), title, text);
}

} // namespace platform
