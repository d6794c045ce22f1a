// What the views of all controls have in common, whatever the backend.
#pragma once

#include "toolkit/control.h"
#include "toolkit/shown_properties.h"

#include <initializer_list>

namespace toolkit {

/// A backend's view of one control, which is bound to it from bind() to release().
///
/// The control may be gone before the view, and is not touched after release() or abandon().
class ControlView : public View {
public:
    explicit ControlView(Control& control) : control_(&control) {}
    ControlView(const ControlView&) = delete;
    ControlView& operator=(const ControlView&) = delete;
    ~ControlView() override;

    /// Takes over what only the layout knows, connects the control and shows all of it.
    void bind();

    /// Disconnects the control for good; the window is closed.
    virtual void release();

    /// The control is gone.
    void abandon() noexcept { control_ = nullptr; }

    void show(Property property) final;

protected:
    /// Gives the control the values that the layout holds and the control does not.
    virtual void adoptDesign() {}

    // To be called by constructors, in the order in which properties are to be shown at first. They are those
    // of ShownProperties; nothing is shown any more when the control is released.
    void shows(Property property, ShownProperties::Show show, ShownProperties::Condition atFirst = {});
    void showsChanges(std::initializer_list<Property> properties, const ShownProperties::Show& show);

    bool bound() const noexcept { return control_ != nullptr; }

private:
    Control* control_;
    ShownProperties properties_;
};

} // namespace toolkit
