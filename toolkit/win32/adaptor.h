// The Windows side of one control.
#pragma once

#include "toolkit/control_view.h"
#include "toolkit/dispatch.h"
#include "toolkit/win32/form_window.h"

#include <windows.h>

#include <commctrl.h>

#include <optional>
#include <string>

namespace toolkit::win32 {

/// Shows a control in the part of the window that bears its name, and hands the part's messages to the core.
/// It never decides: what the user does is reported, and what the control then says is shown.
///
/// It lives as long as its window.
class Adaptor : public ControlView {
public:
    Adaptor(Control& control, FormWindow& window) : ControlView(control), window_(window) {}

    // What the part tells its window.
    virtual void command(unsigned /*notification*/) {}
    virtual std::optional<LRESULT> notified(const NMHDR& /*header*/) { return {}; }
    virtual void draw(const DRAWITEMSTRUCT& /*item*/) {}
    /// Background of the part; null for that of the window.
    virtual HBRUSH background() const { return nullptr; }

    /// The window has another resolution, font or set of colours.
    virtual void rescale() {}
    /// The control's value is to be shown again after what postSettle() was called in.
    virtual void settle() {}

protected:
    FormWindow& window() const noexcept { return window_; }

    /// Hands an event to the core; the one way in.
    template <typename Handler>
    void send(Handler handler) {
        if (!bound()) return;
        const FormWindow::Busy busy(window_);
        dispatch(handler);
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

protected:
    void adoptDesign() override;

    /// What the tool tip says.
    virtual std::string toolTip() const { return control_.toolTip(); }
    void showToolTip();

    HWND part() const noexcept { return part_; }
    void redraw() const { InvalidateRect(part_, nullptr, FALSE); }

private:
    void showEnabled();

    Control& control_;
    HWND part_;
};

} // namespace toolkit::win32
