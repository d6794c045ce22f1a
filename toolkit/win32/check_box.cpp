#include "toolkit/check_box.h"

#include "toolkit/win32/binding.h"
#include "toolkit/win32/captioned.h"

namespace toolkit::win32 {

namespace {

class CheckBoxAdaptor : public ClickedAdaptor<CheckBox> {
public:
    CheckBoxAdaptor(CheckBox& box, FormWindow& window, HWND part) : ClickedAdaptor(box, window, part) {
        shows(Property::Value, [this] { showValue(); });
    }

private:
    /// A box of two states refuses to show the third one. None of these styles changes by itself.
    void showValue() {
        const auto style = static_cast<WPARAM>(GetWindowLongPtrW(part(), GWL_STYLE));
        const WPARAM kind = control().value() == CheckBox::Grayed ? BS_3STATE : BS_CHECKBOX;
        if ((style & BS_TYPEMASK) != kind) SendMessageW(part(), BM_SETSTYLE, (style & 0xFF00u) | kind, TRUE);
        SendMessageW(part(), BM_SETCHECK, static_cast<WPARAM>(control().value()), 0);
    }
};

} // namespace

std::unique_ptr<Adaptor> adaptCheckBox(Control& control, const Place& place) {
    return adaptPart<CheckBoxAdaptor, CheckBox>(control, place, WC_BUTTONW);
}

} // namespace toolkit::win32
