#include "toolkit/qt/spoken_label.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QLabel>

namespace toolkit::qt {

namespace {

class SpokenLabel : public QAccessibleWidget {
public:
    explicit SpokenLabel(QLabel* label) : QAccessibleWidget(label, QAccessible::StaticText), label_(label) {}

    QString text(QAccessible::Text kind) const override {
        if (kind != QAccessible::Name) return QAccessibleWidget::text(kind);
        const QString unit = label_->property("spokenUnit").toString();
        const auto* unitLabel = unit.isEmpty() ? nullptr : label_->window()->findChild<QLabel*>(unit);
        QString spoken = label_->property("spokenPrefix").toString() + QLatin1Char(' ') + label_->text();
        if (unitLabel != nullptr && !label_->text().isEmpty()) spoken += QLatin1Char(' ') + unitLabel->text();
        return spoken;
    }

private:
    QLabel* label_;
};

QAccessibleInterface* accessibleFactory(const QString&, QObject* object) {
    auto* label = qobject_cast<QLabel*>(object);
    const bool spoken = label != nullptr && label->property("spokenPrefix").isValid();
    return spoken ? new SpokenLabel(label) : nullptr;
}

} // namespace

void speakLabels() {
    static const bool installed = (QAccessible::installFactory(accessibleFactory), true);
    static_cast<void>(installed);
}

} // namespace toolkit::qt
