#include "toolkit/win32/adaptor.h"

#include "toolkit/shown_text.h"
#include "toolkit/win32/accessible_text.h"
#include "toolkit/win32/texts.h"
#include "toolkit/win32/tool_tips.h"

namespace toolkit::win32 {

PartAdaptor::PartAdaptor(Control& control, FormWindow& window, HWND part)
    : Adaptor(control, window), control_(control), part_(part) {
    const auto hidden = [this] { return !control_.visible(); };
    const auto showVisible = [this] { ShowWindow(part_, control_.visible() ? SW_SHOWNA : SW_HIDE); };
    shows(Property::Enabled, [this] { showEnabled(); });
    shows(Property::ToolTip, [this] {
        showToolTip();
        showDescription();
    });
    shows(Property::Visible, showVisible, hidden);
}

void PartAdaptor::release() {
    if (bound()) forgetSpoken(part_);
    Adaptor::release();
}

void PartAdaptor::adoptDesign() {
    if (control_.toolTip().empty()) control_.setToolTip(designToolTip(part_));
    if (IsWindowEnabled(part_) == FALSE) control_.setEnabled(false);
}

void PartAdaptor::showToolTip() {
    window().toolTips().set(part_, toolTip());
}

/// The mouse does not show the tip to everybody.
void PartAdaptor::showDescription() {
    const std::string& tip = control_.toolTip();
    if (tip.empty() && !described_) return;
    described_ = true;
    speak(part_, Spoken::Description, fromUtf8(shownTip(tip)));
}

/// The keyboard must not stay where no key has an effect.
void PartAdaptor::showEnabled() {
    if ((IsWindowEnabled(part_) != FALSE) == control_.enabled()) return;
    const bool leave = !control_.enabled() && GetFocus() == part_;
    if (leave) SendMessageW(GetParent(part_), WM_NEXTDLGCTL, 0, FALSE);
    EnableWindow(part_, control_.enabled() ? TRUE : FALSE);
}

} // namespace toolkit::win32
