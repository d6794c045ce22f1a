#include "toolkit/qt/picture_box_widget.h"

#include "toolkit/qt/texts.h"

#include <QApplication>
#include <QPainter>
#include <QResizeEvent>

#include <algorithm>
#include <vector>

namespace toolkit::qt {

namespace {

QColor toQt(Color color) {
    return {color.red, color.green, color.blue};
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
            painter.setPen(toQt(text.color));
            painter.drawText(place, Qt::AlignCenter, fromUtf8(text.text));
        }
    }
    painter.end();
    QFrame::paintEvent(event);
}

} // namespace toolkit::qt
