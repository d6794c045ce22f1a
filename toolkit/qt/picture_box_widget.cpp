#include "toolkit/qt/picture_box_widget.h"

#include "toolkit/qt/colors.h"
#include "toolkit/qt/texts.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QApplication>
#include <QPainter>
#include <QPainterPath>
#include <QResizeEvent>

#include <algorithm>
#include <utility>
#include <vector>

namespace toolkit::qt {

namespace {

/// The number that is written into the box is its value, a share of 100.
class PictureBoxAccessible : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit PictureBoxAccessible(PictureBoxWidget* box)
        : QAccessibleWidget(box, QAccessible::ProgressBar), box_(box) {}

    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Value ? box_->text() : QAccessibleWidget::text(kind);
    }

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ValueInterface) return static_cast<QAccessibleValueInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }

    QVariant currentValue() const override { return box_->text().section(QLatin1Char(' '), 0, 0).toInt(); }
    void setCurrentValue(const QVariant&) override {}
    QVariant maximumValue() const override { return 100; }
    QVariant minimumValue() const override { return 0; }
    QVariant minimumStepSize() const override { return 1; }

private:
    PictureBoxWidget* box_;
};

QAccessibleInterface* accessibleFactory(const QString&, QObject* object) {
    auto* box = dynamic_cast<PictureBoxWidget*>(object);
    return box == nullptr ? nullptr : new PictureBoxAccessible(box);
}

/// From the scale of the box to the points of the widget, with edges on whole device pixels: neighbours that
/// share an edge neither overlap nor leave a gap at any resolution.
class Scale {
public:
    Scale(const QRect& room, qreal deviceRatio)
        : room_(room),
          deviceRatio_(deviceRatio),
          x_(room.width() / PictureBox::ScaleWidth),
          y_(room.height() / PictureBox::ScaleHeight) {}

    QRectF rectangle(const PictureBox::Rectangle& r) const {
        return {QPointF(room_.left() + snap(r.left * x_), room_.top() + snap(r.top * y_)),
                QPointF(room_.left() + snap(r.right * x_), room_.top() + snap(r.bottom * y_))};
    }

    QPointF centre(const PictureBox::Text& t) const {
        return {room_.left() + (t.x + t.size.width / 2) * x_, room_.top() + (t.y + t.size.height / 2) * y_};
    }

private:
    qreal snap(qreal value) const { return qRound(value * deviceRatio_) / deviceRatio_; }

    QRect room_;
    qreal deviceRatio_;
    qreal x_;
    qreal y_;
};

/// White letters may stand on any colour, so they have a dark edge.
void drawText(QPainter& painter, const QRectF& place, const QString& text, Color color) {
    constexpr qreal edge = 3; // half of it lies outside of the letters
    if (color == white) {
        const QFontMetricsF metrics(painter.font());
        QPainterPath letters;
        letters.addText(place.center().x() - metrics.horizontalAdvance(text) / 2,
                        place.center().y() + (metrics.ascent() - metrics.descent()) / 2, painter.font(),
                        text);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.strokePath(letters, QPen(Qt::black, edge, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    }
    painter.setPen(toQt(color));
    painter.drawText(place, Qt::AlignCenter, text);
}

/// Layouts of a window that has not been shown have not been carried out.
void layOut(QWidget* widget) {
    std::vector<QWidget*> branch;
    for (QWidget* w = widget; w != nullptr; w = w->isWindow() ? nullptr : w->parentWidget())
        branch.push_back(w);
    std::for_each(branch.rbegin(), branch.rend(), [](QWidget* w) {
        QResizeEvent resize(w->size(), w->size());
        QApplication::sendEvent(w, &resize);
    });
}

} // namespace

PictureBoxWidget::PictureBoxWidget(QWidget* parent) : QFrame(parent) {
    static const bool installed = (QAccessible::installFactory(accessibleFactory), true);
    static_cast<void>(installed);
}

QString PictureBoxWidget::text() const {
    QString all;
    if (box_ != nullptr)
        for (const PictureBox::Text& text : box_->texts())
            all += fromUtf8(text.text);
    return all;
}

/// A drawing has some hundred steps; it is complete when it is painted.
void PictureBoxWidget::tellScreenReaders() {
    if (!QAccessible::isActive() || std::exchange(told_, text()) == text()) return;
    QAccessibleValueChangeEvent event(this, text());
    QAccessible::updateAccessibility(&event);
}

void PictureBoxWidget::setSource(const PictureBox* box) {
    box_ = box;
    update();
}

PictureBox::Size PictureBoxWidget::textSize(const QString& text) const {
    if (!isVisible()) layOut(const_cast<PictureBoxWidget*>(this));
    const QRect room = contentsRect();
    if (room.isEmpty()) return {};
    const QFontMetricsF metrics(font());
    return {metrics.horizontalAdvance(text) / room.width() * PictureBox::ScaleWidth,
            metrics.height() / room.height() * PictureBox::ScaleHeight};
}

QSize PictureBoxWidget::sizeHint() const {
    const QFontMetrics metrics(font());
    return {metrics.averageCharWidth() * 30, metrics.height() * 3 / 2 + 2 * frameWidth()};
}

void PictureBoxWidget::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(contentsRect(), palette().base());
    if (box_ != nullptr) {
        painter.setClipRect(contentsRect());
        const Scale scale(contentsRect(), devicePixelRatioF());
        for (const PictureBox::Rectangle& r : box_->rectangles())
            painter.fillRect(scale.rectangle(r), toQt(r.color));
        for (const PictureBox::Text& text : box_->texts()) {
            QRectF place(QPointF(), QSizeF(width(), height()));
            place.moveCenter(scale.centre(text));
            drawText(painter, place, fromUtf8(text.text), text.color);
        }
    }
    painter.end();
    tellScreenReaders();
    QFrame::paintEvent(event);
}

} // namespace toolkit::qt
