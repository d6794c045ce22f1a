#pragma once

#include "toolkit/picture_box.h"

#include <QFrame>

#include <functional>

namespace toolkit::qt {

/// Paints what a picture box holds, scaled to the room inside of the border.
class PictureBoxWidget : public QFrame {
public:
    explicit PictureBoxWidget(QWidget* parent = nullptr);

    /// Null when there is nothing to paint any more.
    void setSource(const PictureBox* box);

    /// Size of a text in units of the box's scale, at the size that the widget has or will have when it is
    /// shown.
    PictureBox::Size textSize(const QString& text) const;

    /// What is written into it.
    QString text() const;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void tellScreenReaders();

    const PictureBox* box_ = nullptr;
    QString told_; ///< what screen readers know to be written into it
};

} // namespace toolkit::qt
