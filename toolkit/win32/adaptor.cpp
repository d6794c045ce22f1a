#include "toolkit/win32/adaptor.h"

#include "toolkit/win32/texts.h"
#include "toolkit/win32/tool_tips.h"

namespace toolkit::win32 {

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

void PartAdaptor::adoptDesign() {
    if (control_.toolTip().empty()) control_.setToolTip(designToolTip(part_));
    if (IsWindowEnabled(part_) == FALSE) control_.setEnabled(false);
}

void PartAdaptor::showAll() {
    showEnabled();
    update(Property::ToolTip);
    if (!control_.visible()) update(Property::Visible);
}

void PartAdaptor::update(Property property) {
    switch (property) {
    case Property::Enabled:
        showEnabled();
        break;
    case Property::Visible:
        ShowWindow(part_, control_.visible() ? SW_SHOWNA : SW_HIDE);
        break;
    case Property::ToolTip:
        showToolTip();
        break;
    default:
        break;
    }
}

void PartAdaptor::showToolTip() {
    window().toolTips().set(part_, toolTip());
}

/// The keyboard must not stay where no key has an effect.
void PartAdaptor::showEnabled() {
    if ((IsWindowEnabled(part_) != FALSE) == control_.enabled()) return;
    const bool leave = !control_.enabled() && GetFocus() == part_;
    if (leave) SendMessageW(GetParent(part_), WM_NEXTDLGCTL, 0, FALSE);
    EnableWindow(part_, control_.enabled() ? TRUE : FALSE);
}

} // namespace toolkit::win32
