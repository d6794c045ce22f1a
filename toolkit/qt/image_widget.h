#pragma once

#include <QImage>
#include <QPixmap>
#include <QWidget>

namespace toolkit::qt {

/// Shows a picture, scaled down to the room there is; never larger than a pixel of the picture a point of the
/// screen.
class ImageWidget : public QWidget {
    Q_OBJECT
    /// Size of the whole picture in pixels; empty when there is none.
    Q_PROPERTY(QSize pictureSize READ pictureSize)

public:
    using QWidget::QWidget;

    /// Null shows nothing.
    void setImage(const QImage& image);
    QSize pictureSize() const { return image_.size(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QImage image_;
    QPixmap scaled_; ///< what was painted last
};

} // namespace toolkit::qt
