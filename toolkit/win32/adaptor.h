// The Windows side of one control.
#pragma once

#include "toolkit/control.h"
#include "toolkit/dispatch.h"
#include "toolkit/shown_properties.h"
#include "toolkit/win32/form_window.h"

#include <windows.h>

#include <commctrl.h>

#include <optional>
#include <string>
#include <utility>

namespace toolkit::win32 {

/// Shows a control in the part of the window that bears its name, and hands the part's messages to the core.
/// It never decides: what the user does is reported, and what the control then says is shown.
///
/// It lives as long as its window. The control may be gone before it, and is not touched after release() or
/// abandon().
class Adaptor : public View {
public:
    Adaptor(Control& control, FormWindow& window) : control_(&control), window_(window) {}

    /// Takes over what only the layout knows, connects the control and shows all of it.
    void bind();

    /// Disconnects the control for good; the window is closed.
    virtual void release();

    /// The control is gone.
    void abandon() noexcept { control_ = nullptr; }

    void show(Property property) final {
        if (!bound()) return;
        update(property);
        properties_.show(property);
    }

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
    /// Gives the control the values that the layout holds and the control does not.
    virtual void adoptDesign() {}
    virtual void showAll() {}
    virtual void update(Property /*property*/) {}

    /// The property is shown so, at first and with every change; at first, only if the condition is met.
    void shows(Property property, ShownProperties::Show show, ShownProperties::Condition atFirst = {}) {
        properties_.add(property, std::move(show), std::move(atFirst));
    }
    /// These are shown so when they change.
    void showsChanges(std::initializer_list<Property> properties, const ShownProperties::Show& show) {
        properties_.addChanges(properties, show);
    }

    bool bound() const noexcept { return control_ != nullptr; }
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
    Control* control_;
    FormWindow& window_;
    ShownProperties properties_;
};

/// An adaptor whose part is a native control: enabled, visible and tool tip are the same for every kind.
class PartAdaptor : public Adaptor {
public:
    PartAdaptor(Control& control, FormWindow& window, HWND part)
        : Adaptor(control, window), control_(control), part_(part) {}

protected:
    void adoptDesign() override;
    void showAll() override;
    void update(Property property) override;

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
