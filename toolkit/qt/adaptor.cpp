#include "toolkit/qt/adaptor.h"

#include "toolkit/qt/texts.h"

namespace toolkit::qt {

WidgetAdaptor::WidgetAdaptor(Control& control, QWidget& widget)
    : Adaptor(control),
      control_(control),
      widget_(widget),
      designToolTip_(toUtf8(widget.toolTip())),
      designDescription_(widget.accessibleDescription()) {
    const auto hidden = [this] { return !control_.visible(); };
    const auto showVisible = [this] { widget_.setVisible(control_.visible()); };
    shows(Property::Enabled, [this] { widget_.setEnabled(control_.enabled()); });
    shows(Property::ToolTip, [this] { showToolTip(); });
    shows(Property::Visible, showVisible, hidden);
}

void WidgetAdaptor::adoptDesign() {
    if (control_.toolTip().empty()) control_.setToolTip(toUtf8(widget_.toolTip()));
    // Not isEnabled(): that of the layout's whole branch does not count.
    if (widget_.testAttribute(Qt::WA_ForceDisabled)) control_.setEnabled(false);
}

/// A tip that is not the layout's tells what is so now, and is said in place of what the part is for.
void WidgetAdaptor::showToolTip() {
    widget_.setToolTip(plainToolTip(control_.toolTip()));
    const bool asDesigned = control_.toolTip().empty() || control_.toolTip() == designToolTip_;
    if (!designDescription_.isEmpty())
        widget_.setAccessibleDescription(asDesigned ? designDescription_ : lines(control_.toolTip()));
}

} // namespace toolkit::qt
