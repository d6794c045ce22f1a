#include "toolkit/option_button.h"

#include "toolkit/qt/binding.h"
#include "toolkit/qt/captioned.h"
#include "toolkit/qt/passive_buttons.h"

namespace toolkit::qt {

namespace {

/// The siblings in one frame are one group for the keyboard: the arrow keys walk through it, the tab key
/// stops once.
class OptionButtonAdaptor : public CaptionedAdaptor<OptionButton> {
public:
    OptionButtonAdaptor(OptionButton& option, PassiveRadioButton& widget)
        : CaptionedAdaptor(option, widget), option_(option), widget_(widget) {
        shows(Property::Value, [this] { showValue(); });
    }

private:
    void showValue() {
        if (widget_.isChecked() == option_.value()) return;
        if (option_.value())
            widget_.setChecked(true);
        else
            uncheckTheLast();
    }

    /// Qt refuses to leave a group without a checked button, and has taken the tab stop from all the others.
    void uncheckTheLast() {
        widget_.setAutoExclusive(false);
        widget_.setChecked(false);
        widget_.setAutoExclusive(true);
        for (auto* sibling :
             widget_.parentWidget()->findChildren<QRadioButton*>(QString(), Qt::FindDirectChildrenOnly))
            sibling->setFocusPolicy(Qt::StrongFocus);
    }

    OptionButton& option_;
    PassiveRadioButton& widget_;
};

} // namespace

std::unique_ptr<Adaptor> adaptOptionButton(Control& control, QObject* part) {
    return adaptWidget<OptionButtonAdaptor, OptionButton, PassiveRadioButton>(control, part);
}

} // namespace toolkit::qt
