// What the controls with a caption and a mnemonic letter have in common: push buttons, option buttons, check
// boxes.
#pragma once

#include "toolkit/qt/adaptor.h"
#include "toolkit/qt/texts.h"

#include <QAbstractButton>

namespace toolkit::qt {

/// The layout holds the mnemonic letter in the property "accessKey" and not in the caption, which the core
/// may change at any time. A caption without the letter keeps the key as a shortcut.
template <typename Kind>
class CaptionedAdaptor : public WidgetAdaptor {
public:
    CaptionedAdaptor(Kind& control, QAbstractButton& widget)
        : WidgetAdaptor(control, widget), control_(control), widget_(widget) {
        connect(&widget, &QAbstractButton::clicked, this, [this] { clicked(); });
        shows(Property::Caption, [this] { showCaption(); });
    }

protected:
    void clicked() {
        send([this] { control_.click(); });
    }

    void adoptDesign() override {
        WidgetAdaptor::adoptDesign();
        if (control_.caption().empty()) control_.setCaption(toUtf8(widget_.text()));
    }

private:
    void showCaption() {
        const QString key = widget_.property("accessKey").toString();
        const QString caption = lines(control_.caption());
        widget_.setText(withMnemonic(caption, key));
        if (!key.isEmpty() && !caption.contains(key, Qt::CaseInsensitive))
            widget_.setShortcut(QKeySequence(QStringLiteral("Alt+") + key));
    }

    Kind& control_;
    QAbstractButton& widget_;
};

/// The adaptor of that type for a control and a widget of these kinds; null when one of them is another.
template <typename AdaptorType, typename Kind, typename Widget>
std::unique_ptr<Adaptor> adaptWidget(Control& control, QObject* part) {
    auto* kind = dynamic_cast<Kind*>(&control);
    auto* widget = dynamic_cast<Widget*>(part);
    if (kind == nullptr || widget == nullptr) return nullptr;
    return std::make_unique<AdaptorType>(*kind, *widget);
}

} // namespace toolkit::qt
