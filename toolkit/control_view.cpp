#include "toolkit/control_view.h"

#include "toolkit/held_events.h"

#include <utility>

namespace toolkit {

/// An event that was held for it has nobody to go to.
ControlView::~ControlView() {
    forgetHeldEvents(this);
}

void ControlView::bind() {
    adoptDesign();
    control_->attach(this);
    properties_.showAll();
}

void ControlView::release() {
    if (!bound()) return;
    control_->attach(nullptr);
    control_ = nullptr;
}

void ControlView::show(Property property) {
    if (bound()) properties_.show(property);
}

void ControlView::shows(Property property, ShownProperties::Show show, ShownProperties::Condition atFirst) {
    properties_.add(property, std::move(show), std::move(atFirst));
}

void ControlView::showsChanges(std::initializer_list<Property> properties,
                               const ShownProperties::Show& show) {
    properties_.addChanges(properties, show);
}

} // namespace toolkit
