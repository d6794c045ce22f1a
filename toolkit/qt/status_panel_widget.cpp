#include "toolkit/qt/status_panel_widget.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QPainter>
#include <QStyle>

#include <utility>

namespace toolkit::qt {

namespace {

/// A screen reader asks for the text when it wants it.
class StatusPanelAccessible : public QAccessibleWidget {
public:
    explicit StatusPanelAccessible(StatusPanelWidget* panel)
        : QAccessibleWidget(panel, QAccessible::StaticText), panel_(panel) {}

    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name ? panel_->text() : QAccessibleWidget::text(kind);
    }

private:
    StatusPanelWidget* panel_;
};

QAccessibleInterface* accessibleFactory(const QString&, QObject* object) {
    auto* panel = qobject_cast<StatusPanelWidget*>(object);
    return panel == nullptr ? nullptr : new StatusPanelAccessible(panel);
}

constexpr int shortestCharacters = 14;
constexpr int usualCharacters = 24;

} // namespace

StatusPanelWidget::StatusPanelWidget(QWidget* parent) : QWidget(parent) {
    static const bool installed = (QAccessible::installFactory(accessibleFactory), true);
    static_cast<void>(installed);
}

void StatusPanelWidget::setTextSource(std::function<QString()> source) {
    source_ = std::move(source);
    update();
}

void StatusPanelWidget::textChanged() {
    update();
    if (!QAccessible::isActive()) return;
    QAccessibleEvent event(this, QAccessible::NameChanged);
    QAccessible::updateAccessibility(&event);
}

void StatusPanelWidget::setPicture(const QIcon& picture) {
    picture_ = picture;
    update();
}

QSize StatusPanelWidget::sizeHint() const {
    const QFontMetrics metrics(font());
    return {pictureSize() + metrics.averageCharWidth() * usualCharacters,
            qMax(pictureSize(), metrics.height()) + metrics.height() / 3};
}

QSize StatusPanelWidget::minimumSizeHint() const {
    return {pictureSize() + QFontMetrics(font()).averageCharWidth() * shortestCharacters,
            sizeHint().height()};
}

int StatusPanelWidget::pictureSize() const {
    return style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, this);
}

void StatusPanelWidget::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QFontMetrics metrics(font());
    const int gap = metrics.averageCharWidth();
    int left = 0;
    if (hasPicture()) {
        const QRect place(0, (height() - pictureSize()) / 2, pictureSize(), pictureSize());
        picture_.paint(&painter, place, Qt::AlignCenter, isEnabled() ? QIcon::Normal : QIcon::Disabled);
        left = pictureSize() + gap;
    }
    const QRect room = rect().adjusted(left, 0, 0, 0);
    // Hardly a character is narrower than a point, so what lies behind those cannot be seen: not worth
    // measuring.
    const QString visible = text().left(room.width());
    const QPalette::ColorGroup group = isEnabled() ? QPalette::Active : QPalette::Disabled;
    painter.setPen(palette().color(group, QPalette::WindowText));
    painter.drawText(room, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine,
                     metrics.elidedText(visible, Qt::ElideRight, room.width()));
}

} // namespace toolkit::qt
