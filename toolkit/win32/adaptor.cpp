#include "toolkit/win32/adaptor.h"

#include "toolkit/win32/texts.h"
#include "toolkit/win32/tool_tips.h"

namespace toolkit::win32 {

PartAdaptor::PartAdaptor(Control& control, FormWindow& window, HWND part)
    : Adaptor(control, window), control_(control), part_(part) {
    const auto hidden = [this] { return !control_.visible(); };
    const auto showVisible = [this] { ShowWindow(part_, control_.visible() ? SW_SHOWNA : SW_HIDE); };
    shows(Property::Enabled, [this] { showEnabled(); });
    shows(Property::ToolTip, [this] { showToolTip(); });
    shows(Property::Visible, showVisible, hidden);
}

void PartAdaptor::adoptDesign() {
    if (control_.toolTip().empty()) control_.setToolTip(designToolTip(part_));
    if (IsWindowEnabled(part_) == FALSE) control_.setEnabled(false);
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
