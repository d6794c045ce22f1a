#include "toolkit/check_box.h"

#include "toolkit/qt/binding.h"
#include "toolkit/qt/captioned.h"
#include "toolkit/qt/passive_buttons.h"

namespace toolkit::qt {

namespace {

class CheckBoxAdaptor : public CaptionedAdaptor<CheckBox> {
public:
    CheckBoxAdaptor(CheckBox& box, PassiveCheckBox& widget)
        : CaptionedAdaptor(box, widget), box_(box), widget_(widget) {
        shows(Property::Value, [this] { showValue(); });
    }

private:
    void showValue() {
        widget_.setTristate(box_.value() == CheckBox::Grayed);
        if (box_.value() == CheckBox::Grayed)
            widget_.setCheckState(Qt::PartiallyChecked);
        else
            widget_.setChecked(box_.value() == CheckBox::Checked);
    }

    CheckBox& box_;
    PassiveCheckBox& widget_;
};

} // namespace

std::unique_ptr<Adaptor> adaptCheckBox(Control& control, QObject* part) {
    return adaptWidget<CheckBoxAdaptor, CheckBox, PassiveCheckBox>(control, part);
}

} // namespace toolkit::qt
