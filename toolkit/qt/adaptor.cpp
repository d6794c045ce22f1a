#include "toolkit/qt/adaptor.h"

#include "toolkit/qt/texts.h"

namespace toolkit::qt {

void Adaptor::bind() {
    adoptDesign();
    control_->attach(this);
    showAll();
    properties_.showAll();
}

void Adaptor::release() {
    if (control_ == nullptr) return;
    control_->attach(nullptr);
    control_ = nullptr;
}

void WidgetAdaptor::adoptDesign() {
    if (control_.toolTip().empty()) control_.setToolTip(toUtf8(widget_.toolTip()));
    // Not isEnabled(): that of the layout's whole branch does not count.
    if (widget_.testAttribute(Qt::WA_ForceDisabled)) control_.setEnabled(false);
}

void WidgetAdaptor::showAll() {
    update(Property::Enabled);
    update(Property::ToolTip);
    if (!control_.visible()) update(Property::Visible);
}

void WidgetAdaptor::update(Property property) {
    switch (property) {
    case Property::Enabled:
        widget_.setEnabled(control_.enabled());
        break;
    case Property::Visible:
        widget_.setVisible(control_.visible());
        break;
    case Property::ToolTip:
        widget_.setToolTip(plainToolTip(control_.toolTip()));
        break;
    default:
        break;
    }
}

} // namespace toolkit::qt
