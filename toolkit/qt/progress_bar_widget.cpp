#include "toolkit/qt/progress_bar_widget.h"

#include "toolkit/qt/texts.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionProgressBar>
#include <QToolTip>

#include <chrono>
#include <utility>

namespace toolkit::qt {

namespace {

constexpr int shortestCharacters = 12;
constexpr int gap = 2; ///< between the text and the bar; pixels

/// What appears as a notification screen readers say at once. With a bar it has a value as well.
class ProgressBarAccessible : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit ProgressBarAccessible(ProgressBarWidget* bar)
        : QAccessibleWidget(bar, QAccessible::Notification), bar_(bar) {}

    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name ? bar_->text() : QAccessibleWidget::text(kind);
    }

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ValueInterface && isMeasured())
            return static_cast<QAccessibleValueInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }

    // Percent.
    QVariant currentValue() const override { return bar_->share() * 100 / ProgressBarWidget::fullBar; }
    void setCurrentValue(const QVariant&) override {}
    QVariant maximumValue() const override { return 100; }
    QVariant minimumValue() const override { return 0; }
    QVariant minimumStepSize() const override { return 1; }

private:
    bool isMeasured() const { return bar_->hasBar() && bar_->maximum() > bar_->minimum(); }

    ProgressBarWidget* bar_;
};

QAccessibleInterface* accessibleFactory(const QString&, QObject* object) {
    auto* bar = qobject_cast<ProgressBarWidget*>(object);
    return bar == nullptr ? nullptr : new ProgressBarAccessible(bar);
}

void tellScreenReaders(QWidget* part, QAccessible::Event what) {
    if (!QAccessible::isActive()) return;
    QAccessibleEvent event(part, what);
    QAccessible::updateAccessibility(&event);
}

} // namespace

ProgressBarWidget::ProgressBarWidget(QWidget* parent) : QProgressBar(parent) {
    static const bool installed = (QAccessible::installFactory(accessibleFactory), true);
    static_cast<void>(installed);
    setTextVisible(false);
    constexpr std::chrono::milliseconds settled{400};
    telling_.setSingleShot(true);
    telling_.setInterval(settled);
    connect(&telling_, &QTimer::timeout, this, &ProgressBarWidget::tellText);
}

void ProgressBarWidget::setText(const QString& text) {
    if (text_ == text) return;
    text_ = text;
    update();
    telling_.stop();
    const bool measured = hasBar_ && maximum() > 0;
    if (hasBar_ && !measured)
        telling_.start();
    else if (!measured || !std::exchange(spoken_, true))
        tellText();
}

/// A screen reader asks for the text when it gets round to it, and would say the last one as often as it was
/// told of one. So a step of the job is told when it takes a while, and each text once.
void ProgressBarWidget::tellText() {
    if (text_.isEmpty() || std::exchange(told_, text_) == text_) return;
    tellScreenReaders(this, QAccessible::ObjectShow);
}

void ProgressBarWidget::setHasBar(bool hasBar) {
    if (hasBar_ == hasBar) return;
    hasBar_ = hasBar;
    update();
}

void ProgressBarWidget::showNothing() {
    setHasBar(false);
    setRange(0, fullBar); // a bar without a range goes on moving
    reset();
}

void ProgressBarWidget::showShare(int share) {
    constexpr int spokenStep = fullBar / 4;
    setHasBar(true);
    setRange(0, fullBar);
    share_ = share;
    update();
    // Each change of this is told to screen readers, which are slower than the bar.
    const int step = share - share % spokenStep;
    if (value() == step) return;
    setValue(step);
    if (step > 0) spoken_ = false;
}

void ProgressBarWidget::showBusy() {
    setHasBar(true);
    setRange(0, 0);
}

/// The text itself was told when it appeared.
void ProgressBarWidget::alert() {
    tellScreenReaders(this, QAccessible::Alert);
}

QSize ProgressBarWidget::sizeHint() const {
    const QFontMetrics metrics(font());
    return {metrics.averageCharWidth() * 2 * shortestCharacters, metrics.height() + metrics.lineSpacing()};
}

QSize ProgressBarWidget::minimumSizeHint() const {
    return {QFontMetrics(font()).averageCharWidth() * shortestCharacters, sizeHint().height()};
}

QRect ProgressBarWidget::textRoom() const {
    return hasBar_ ? QRect(0, 0, width(), QFontMetrics(font()).height()) : rect();
}

QRect ProgressBarWidget::barRoom() const {
    const int top = textRoom().bottom() + 1 + gap;
    return {0, top, width(), height() - top};
}

bool ProgressBarWidget::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip || !toolTip().isEmpty() || text_.isEmpty())
        return QProgressBar::event(event);
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), plainToolTip(toUtf8(text_)), this);
    return true;
}

void ProgressBarWidget::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::Active, QPalette::WindowText));
    const QRect room = textRoom();
    const QFontMetrics metrics(font());
    const int wrapped = hasBar_ ? 0 : int{Qt::TextWordWrap};
    const bool fits = room.contains(metrics.boundingRect(room, Qt::AlignLeft | wrapped, text_));
    constexpr int besideTheBar{Qt::AlignLeft | Qt::AlignVCenter};
    painter.drawText(room, besideTheBar | (fits ? wrapped : 0),
                     fits ? text_ : metrics.elidedText(text_, Qt::ElideRight, room.width()));
    if (!hasBar_) return;
    QStyleOptionProgressBar option;
    initStyleOption(&option);
    option.rect = barRoom();
    option.progress = share_;
    style()->drawControl(QStyle::CE_ProgressBar, &option, &painter, this);
}

} // namespace toolkit::qt
