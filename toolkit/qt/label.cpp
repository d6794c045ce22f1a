#include "toolkit/label.h"

#include "toolkit/qt/binding.h"
#include "toolkit/qt/colors.h"
#include "toolkit/qt/texts.h"
#include "toolkit/shown_text.h"

#include <QLabel>

namespace toolkit::qt {

namespace {

class LabelAdaptor : public WidgetAdaptor {
public:
    LabelAdaptor(Label& label, QLabel& widget)
        : WidgetAdaptor(label, widget), label_(label), widget_(widget) {
        // Texts come from a server, too: nothing in them is ever markup.
        widget_.setTextFormat(Qt::PlainText);
        shows(Property::Caption, [this] { showCaption(); });
        shows(Property::BackColor, [this] { showBackColor(); });
    }

protected:
    void adoptDesign() override {
        WidgetAdaptor::adoptDesign();
        if (label_.caption().empty()) label_.setCaption(toUtf8(widget_.text()));
    }

private:
    void showCaption() { widget_.setText(lines(shownText(label_.caption()))); }

    void showBackColor() {
        if (!label_.backColor()) return;
        const Color color = *label_.backColor();
        QPalette palette = widget_.palette();
        palette.setColor(QPalette::Window, toQt(color));
        widget_.setPalette(palette);
        widget_.setAutoFillBackground(true);
    }

    Label& label_;
    QLabel& widget_;
};

} // namespace

std::unique_ptr<Adaptor> adaptLabel(Control& control, QObject* part) {
    auto* label = dynamic_cast<Label*>(&control);
    auto* widget = qobject_cast<QLabel*>(part);
    if (label == nullptr || widget == nullptr) return nullptr;
    return std::make_unique<LabelAdaptor>(*label, *widget);
}

} // namespace toolkit::qt
