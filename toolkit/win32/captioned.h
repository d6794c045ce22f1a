// What the controls with a caption have in common: frames, and those that are clicked, too: push buttons,
// option buttons, check boxes.
#pragma once

#include "toolkit/win32/adaptor.h"
#include "toolkit/win32/texts.h"

namespace toolkit::win32 {

/// The layout may mark an access key in the caption. The core may change the caption at any time; it keeps
/// the key.
template <typename Kind>
class CaptionedAdaptor : public PartAdaptor {
public:
    CaptionedAdaptor(Kind& control, FormWindow& window, HWND part)
        : PartAdaptor(control, window, part), control_(control), accessKey_(accessKey(windowText(part))) {
        shows(Property::Caption, [this] { showCaption(); });
    }

protected:
    Kind& control() const noexcept { return control_; }

    void adoptDesign() override {
        PartAdaptor::adoptDesign();
        if (control_.caption().empty()) control_.setCaption(toUtf8(withoutMnemonic(windowText(part()))));
    }

private:
    void showCaption() { setWindowText(part(), withMnemonic(fromUtf8(control_.caption()), accessKey_)); }

    Kind& control_;
    wchar_t accessKey_;
};

template <typename Kind>
class ClickedAdaptor : public CaptionedAdaptor<Kind> {
public:
    using CaptionedAdaptor<Kind>::CaptionedAdaptor;

    void command(unsigned notification) override {
        // A fast second click has a notification of its own.
        if (notification == BN_CLICKED || notification == BN_DOUBLECLICKED) clicked();
    }

protected:
    void clicked() {
        this->send([this] { this->control().click(); });
    }
};

} // namespace toolkit::win32
