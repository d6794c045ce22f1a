#include "toolkit/qt/status_panel_widget.h"

#include "toolkit/qt/texts.h"
#include "toolkit/shown_text.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QPainter>
#include <QRegularExpression>
#include <QStyle>

#include <chrono>
#include <utility>

namespace toolkit::qt {

namespace {

/// What appears as a notification screen readers say at once.
class StatusPanelAccessible : public QAccessibleWidget {
public:
    explicit StatusPanelAccessible(StatusPanelWidget* panel)
        : QAccessibleWidget(panel, QAccessible::Notification), panel_(panel) {}

    QString text(QAccessible::Text kind) const override {
        static const QRegularExpression dots(QStringLiteral("\\.{3,}"));
        return kind == QAccessible::Name ? panel_->text().replace(dots, QStringLiteral("..."))
                                         : QAccessibleWidget::text(kind);
    }

private:
    StatusPanelWidget* panel_;
};

QAccessibleInterface* accessibleFactory(const QString&, QObject* object) {
    auto* panel = qobject_cast<StatusPanelWidget*>(object);
    return panel == nullptr ? nullptr : new StatusPanelAccessible(panel);
}

constexpr int shortestCharacters = 14;

} // namespace

StatusPanelWidget::StatusPanelWidget(QWidget* parent) : QWidget(parent) {
    static const bool installed = (QAccessible::installFactory(accessibleFactory), true);
    static_cast<void>(installed);
    growth_.setSingleShot(true);
    connect(&growth_, &QTimer::timeout, this, qOverload<>(&QWidget::update));
}

void StatusPanelWidget::setTextSource(std::function<QString()> source) {
    source_ = std::move(source);
    update();
}

/// One more dot is nothing new: hundreds of them would have a screen reader behind by half a minute. And no
/// screen shows hundreds of them a second.
void StatusPanelWidget::textChanged() {
    using namespace std::chrono_literals;
    if (head_ == 0)
        update();
    else if (!growth_.isActive())
        growth_.start(16ms);
    if (!QAccessible::isActive()) return;
    QString meaning = text();
    while (meaning.endsWith(QLatin1Char('.')))
        meaning.chop(1);
    if (std::exchange(told_, meaning) == meaning) return;
    QAccessibleEvent event(this, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&event);
}

void StatusPanelWidget::setPicture(const QIcon& picture) {
    picture_ = picture;
    update();
}

QSize StatusPanelWidget::sizeHint() const {
    const QFontMetrics metrics(font());
    return {pictureSize() + metrics.averageCharWidth() * characters_,
            qMax(pictureSize(), metrics.height()) + metrics.height() / 3};
}

QSize StatusPanelWidget::minimumSizeHint() const {
    return {pictureSize() + QFontMetrics(font()).averageCharWidth() * shortestCharacters,
            sizeHint().height()};
}

int StatusPanelWidget::pictureSize() const {
    return style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, this);
}

QString StatusPanelWidget::visibleText(int width) const {
    const QFontMetrics metrics(font());
    // Hardly a character is narrower than a point, so what lies behind those cannot be seen: not worth
    // measuring.
    if (head_ == 0) return metrics.elidedText(text().left(width), Qt::ElideRight, width);
    const auto fits = [&](const std::string& shown) {
        return metrics.horizontalAdvance(fromUtf8(shown)) <= width;
    };
    return metrics.elidedText(fromUtf8(shownEnd(toUtf8(text()), head_, fits)), Qt::ElideRight, width);
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
    const QPalette::ColorGroup group = isEnabled() ? QPalette::Active : QPalette::Disabled;
    painter.setPen(palette().color(group, QPalette::WindowText));
    painter.drawText(room, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine, visibleText(room.width()));
}

} // namespace toolkit::qt
