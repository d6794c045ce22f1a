#include "toolkit/qt/image_widget.h"

#include <QPainter>

namespace toolkit::qt {

void ImageWidget::setImage(const QImage& image) {
    image_ = image;
    scaled_ = {};
    update();
}

void ImageWidget::paintEvent(QPaintEvent*) {
    if (image_.isNull()) return;
    QSize target = image_.size();
    if (target.width() > width() || target.height() > height()) target.scale(size(), Qt::KeepAspectRatio);
    // In device pixels: at 200 % a picture scaled down to half its size shows each of its own pixels.
    const QSize pixels = target * devicePixelRatioF();
    if (scaled_.size() != pixels) {
        scaled_ = QPixmap::fromImage(image_.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
        scaled_.setDevicePixelRatio(devicePixelRatioF());
    }
    QPainter painter(this);
    painter.setOpacity(isEnabled() ? 1.0 : 0.5);
    painter.drawPixmap((width() - target.width()) / 2, (height() - target.height()) / 2, scaled_);
}

} // namespace toolkit::qt
