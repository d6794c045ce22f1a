#pragma once

#include <windows.h>

#include <commctrl.h>

namespace toolkit::win32 {

/// Gets the messages of a native control before the control does, as long as both live. Nothing that it calls
/// may throw.
class Subclass {
public:
    explicit Subclass(HWND window) : window_(window) {
        SetWindowSubclass(window, procedure, number(), reinterpret_cast<DWORD_PTR>(this));
    }
    Subclass(const Subclass&) = delete;
    Subclass& operator=(const Subclass&) = delete;
    virtual ~Subclass() {
        if (window_ != nullptr) RemoveWindowSubclass(window_, procedure, number());
    }

protected:
    virtual LRESULT received(UINT message, WPARAM wParam, LPARAM lParam) = 0;

    /// What the control itself makes of the message.
    LRESULT next(UINT message, WPARAM wParam, LPARAM lParam) {
        return DefSubclassProc(window_, message, wParam, lParam);
    }

    HWND subclassed() const { return window_; }

private:
    UINT_PTR number() const { return reinterpret_cast<UINT_PTR>(this); }

    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam,
                                      UINT_PTR number, DWORD_PTR object) noexcept {
        auto* self = reinterpret_cast<Subclass*>(object);
        if (message == WM_NCDESTROY) {
            RemoveWindowSubclass(window, procedure, number);
            self->window_ = nullptr;
            return DefSubclassProc(window, message, wParam, lParam);
        }
        return self->received(message, wParam, lParam);
    }

    HWND window_;
};

} // namespace toolkit::win32
