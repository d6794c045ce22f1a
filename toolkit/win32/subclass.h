#pragma once

#include <windows.h>

namespace toolkit::win32 {

/// Gets the messages of a native control before the control does, as long as both live. There is one for a
/// control, and its user data is taken. Nothing that it calls may throw.
///
/// The common controls' own way (SetWindowSubclass) looks a property of the window up twice for every
/// message: under Wine each is a question to another process, and a start has thousands of messages.
class Subclass {
public:
    explicit Subclass(HWND window) : window_(window) {
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        before_ = replaceProcedure(procedure);
    }
    Subclass(const Subclass&) = delete;
    Subclass& operator=(const Subclass&) = delete;
    virtual ~Subclass() {
        if (window_ != nullptr) replaceProcedure(before_);
    }

protected:
    virtual LRESULT received(UINT message, WPARAM wParam, LPARAM lParam) = 0;

    /// What the control itself makes of the message.
    LRESULT next(UINT message, WPARAM wParam, LPARAM lParam) {
        return CallWindowProcW(before_, window_, message, wParam, lParam);
    }

    HWND subclassed() const { return window_; }

private:
    WNDPROC replaceProcedure(WNDPROC replacement) const {
        return reinterpret_cast<WNDPROC>(
            SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(replacement)));
    }

    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
        auto* self = reinterpret_cast<Subclass*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        if (message == WM_NCDESTROY) {
            WNDPROC const before = self->before_;
            self->replaceProcedure(before);
            self->window_ = nullptr;
            return CallWindowProcW(before, window, message, wParam, lParam);
        }
        return self->received(message, wParam, lParam);
    }

    HWND window_;
    WNDPROC before_;
};

} // namespace toolkit::win32
