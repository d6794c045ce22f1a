// The Windows side of one control.
#pragma once

#include "toolkit/dispatch.h"
#include "toolkit/win32/form_window.h"
#include "toolkit/win32/window_part.h"

#include <windows.h>

#include <string>
#include <utility>

namespace toolkit::win32 {

/// Shows a control in the part of the window that bears its name, and hands the part's messages to the core.
/// It never decides: what the user does is reported, and what the control then says is shown.
///
/// It lives as long as its window.
class Adaptor : public WindowPart {
public:
    Adaptor(Control& control, FormWindow& window) : WindowPart(control), window_(window) {}

protected:
    FormWindow& window() const noexcept { return window_; }

    /// Hands an event to the core; the one way in. It may be held for a while, so the handler owns what it
    /// uses.
    template <typename Handler>
    void send(Handler handler) {
        if (!bound()) return;
        const FormWindow::Busy busy(window_);
        dispatch(
            [this, handler = std::move(handler)] {
                const FormWindow::Busy handling(window_);
                if (bound()) handler();
            },
            this);
    }

    /// Has settle() called when the messages before it have been handled.
    void postSettle() { window_.postSettle(*this); }

private:
    FormWindow& window_;
};

/// An adaptor whose part is a native control: enabled, visible and tool tip are the same for every kind.
class PartAdaptor : public Adaptor {
public:
    PartAdaptor(Control& control, FormWindow& window, HWND part);

    void release() override;

protected:
    void adoptDesign() override;

    /// What the tool tip says.
    virtual std::string toolTip() const { return control_.toolTip(); }
    void showToolTip();

    HWND part() const noexcept { return part_; }
    void redraw() const { InvalidateRect(part_, nullptr, FALSE); }

private:
    void showEnabled();
    void showDescription();

    Control& control_;
    HWND part_;
    bool described_ = false;
};

} // namespace toolkit::win32
