#include "toolkit/text_box.h"

#include "toolkit/qt/binding.h"
#include "toolkit/qt/captioned.h"
#include "toolkit/qt/line_edit.h"

namespace toolkit::qt {

namespace {

class TextBoxAdaptor : public WidgetAdaptor {
public:
    TextBoxAdaptor(TextBox& box, LineEdit& widget) : WidgetAdaptor(box, widget), box_(box), widget_(widget) {
        widget.onKeyPress = [this](char32_t character) {
            send([this, character] { box_.keyPress(character); });
        };
        widget.onTyped = [this](const QString& text) { send([this, text] { box_.typed(toUtf8(text)); }); };
        shows(Property::Text, [this] { widget_.setText(fromUtf8(box_.text())); });
        showsChanges({Property::Selection}, [this] { showSelection(); });
        showsChanges({Property::Focus}, [this] { widget_.setFocus(Qt::OtherFocusReason); });
    }

protected:
    void adoptDesign() override {
        WidgetAdaptor::adoptDesign();
        if (box_.text().empty()) box_.setText(toUtf8(widget_.text()));
    }

private:
    void showSelection() {
        const TextBox::Selection& selection = box_.selection();
        const int start = utf16Position(widget_.text(), selection.start);
        const int end = utf16Position(widget_.text(), selection.start + selection.length);
        widget_.setSelection(start, end - start);
    }

    TextBox& box_;
    LineEdit& widget_;
};

} // namespace

std::unique_ptr<Adaptor> adaptTextBox(Control& control, QObject* part) {
    return adaptWidget<TextBoxAdaptor, TextBox, LineEdit>(control, part);
}

} // namespace toolkit::qt
