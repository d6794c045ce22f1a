// The Qt side of one control.
#pragma once

#include "toolkit/control.h"
#include "toolkit/dispatch.h"
#include "toolkit/shown_properties.h"

#include <QObject>
#include <QWidget>

#include <memory>
#include <utility>

namespace toolkit::qt {

/// Shows a control in the part of the layout that bears its name, and hands the part's events to the core. It
/// never decides: what the user does is reported, and what the control then says is shown.
///
/// Everything an adaptor connects has the adaptor as its context, so nothing reaches it once it is gone. The
/// control may be gone before the adaptor, whose destructor therefore leaves it alone.
class Adaptor : public QObject, public View {
public:
    explicit Adaptor(Control& control) : control_(&control) {}

    /// Takes over what only the layout knows, connects the control and shows all of it.
    void bind();

    /// Disconnects the control for good; the window is closed.
    virtual void release();

    void show(Property property) final {
        if (control_ == nullptr) return;
        update(property);
        properties_.show(property);
    }

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

    /// Hands an event to the core; the one way in.
    template <typename Handler>
    void send(Handler handler) {
        if (control_ != nullptr) dispatch(handler);
    }

private:
    Control* control_;
    ShownProperties properties_;
};

/// An adaptor whose part of the layout is a widget: enabled, visible and tool tip are the same for every
/// kind.
class WidgetAdaptor : public Adaptor {
public:
    WidgetAdaptor(Control& control, QWidget& widget) : Adaptor(control), control_(control), widget_(widget) {}

protected:
    void adoptDesign() override;
    void showAll() override;
    void update(Property property) override;

private:
    Control& control_;
    QWidget& widget_;
};

} // namespace toolkit::qt
