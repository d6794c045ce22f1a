// The Qt side of one control.
#pragma once

#include "toolkit/control_view.h"
#include "toolkit/dispatch.h"

#include <QObject>
#include <QWidget>

#include <memory>
#include <utility>

namespace toolkit::qt {

/// Shows a control in the part of the layout that bears its name, and hands the part's events to the core. It
/// never decides: what the user does is reported, and what the control then says is shown.
///
/// Everything an adaptor connects has the adaptor as its context, so nothing reaches it once it is gone.
class Adaptor : public QObject, public ControlView {
public:
    using ControlView::ControlView;

protected:
    /// Hands an event to the core; the one way in. It may be held for a while, so the handler owns what it
    /// uses.
    template <typename Handler>
    void send(Handler handler) {
        if (bound())
            dispatch(
                [this, handler = std::move(handler)] {
                    if (bound()) handler();
                },
                this);
    }
};

/// An adaptor whose part of the layout is a widget: enabled, visible and tool tip are the same for every
/// kind.
class WidgetAdaptor : public Adaptor {
public:
    WidgetAdaptor(Control& control, QWidget& widget);

protected:
    void adoptDesign() override;

private:
    void showToolTip();

    Control& control_;
    QWidget& widget_;
    std::string designToolTip_;
    QString designDescription_;
};

} // namespace toolkit::qt
