// What a window knows of the adaptors in it.
#pragma once

#include "toolkit/control_view.h"

#include <windows.h>

#include <commctrl.h>

#include <optional>

namespace toolkit::win32 {

/// A part of a window, which hands it the messages that are meant for it.
class WindowPart : public ControlView {
public:
    using ControlView::ControlView;

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
};

} // namespace toolkit::win32
