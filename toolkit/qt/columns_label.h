#pragma once

#include <QLabel>

namespace toolkit::qt {

/// Lines of words that stand below each other where they have the same number of characters in front of them,
/// whatever the font: on a machine without a font of equally wide characters, too.
class ColumnsLabel : public QLabel {
public:
    using QLabel::QLabel;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    qreal cellWidth() const;
};

} // namespace toolkit::qt
