#include "toolkit/qt/focus_frame.h"

#include "toolkit/contrast.h"
#include "toolkit/qt/colors.h"

#include <QApplication>
#include <QCheckBox>
#include <QEvent>
#include <QPainter>
#include <QRadioButton>
#include <QScrollArea>
#include <QStyle>
#include <QStyleOptionButton>

namespace toolkit::qt {

namespace {

constexpr int thickness = 2;
constexpr int distance = 3; ///< its outer edge from that of the part

/// The frame scrolls together with the part, and is cut where the part is: it is drawn on what the outermost
/// scroll area shows, else on the window.
QWidget* canvasOf(const QWidget& part) {
    QWidget* canvas = part.window();
    for (QWidget* above = part.parentWidget(); above != nullptr; above = above->parentWidget())
        if (auto* area = qobject_cast<QScrollArea*>(above)) canvas = area->widget();
    return canvas;
}

bool isFramed(const QWidget* part) {
    return part != nullptr && !part->isWindow() && part->window()->windowType() != Qt::Popup;
}

/// An option or a box may have far more room than its text needs.
QRect shapeOf(const QWidget& part) {
    const auto* button = qobject_cast<const QAbstractButton*>(&part);
    const bool isOption = qobject_cast<const QRadioButton*>(button) != nullptr;
    if (!isOption && qobject_cast<const QCheckBox*>(button) == nullptr) return part.rect();
    QStyleOptionButton option;
    option.initFrom(button);
    option.text = button->text();
    option.iconSize = button->iconSize();
    return part.style()->subElementRect(
        isOption ? QStyle::SE_RadioButtonClickRect : QStyle::SE_CheckBoxClickRect, &option, &part);
}

} // namespace

FocusFrame::FocusFrame() {
    setObjectName(QStringLiteral("qt_focusframe"));
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) { follow(now); });
}

FocusFrame::~FocusFrame() = default;

void FocusFrame::follow(QWidget* part) {
    for (const QPointer<QWidget>& watched : watched_)
        if (watched != nullptr) watched->removeEventFilter(this);
    watched_.clear();
    part_ = isFramed(part) ? part : nullptr;
    hide();
    if (part_ == nullptr) {
        setParent(nullptr); // the window may go
        return;
    }
    QWidget* const canvas = canvasOf(*part_);
    setParent(canvas);
    for (QWidget* above = part_; above != nullptr && above != canvas; above = above->parentWidget()) {
        watched_.emplace_back(above);
        above->installEventFilter(this);
    }
    place();
    raise();
    show();
}

void FocusFrame::place() {
    const QRect part = shapeOf(*part_).translated(part_->mapTo(parentWidget(), QPoint()));
    setGeometry(part.adjusted(-distance, -distance, distance, distance) & parentWidget()->rect());
}

bool FocusFrame::eventFilter(QObject*, QEvent* event) {
    const bool moved = event->type() == QEvent::Move || event->type() == QEvent::Resize;
    if (moved && part_ != nullptr && parentWidget() != nullptr) place();
    return false;
}

void FocusFrame::paintEvent(QPaintEvent*) {
    const auto color = [this](QPalette::ColorRole role) { return toColor(palette().color(role)); };
    const Color seen = readable(color(QPalette::Highlight), color(QPalette::WindowText),
                                {color(QPalette::Window)}, markContrast);
    constexpr qreal half = thickness / 2.0;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(toQt(seen), thickness));
    painter.drawRoundedRect(QRectF(rect()).adjusted(half, half, -half, -half), 3, 3);
}

} // namespace toolkit::qt
