#pragma once

#include <QLabel>

namespace toolkit::qt {

/// A label for texts of any length: it breaks lines inside of a word, too, when the word is too long for one,
/// so no text makes a window wider. The dynamic property "maximumLines" limits the height; the rest is then
/// cut, and the whole text is in the tool tip.
class WrappingLabel : public QLabel {
public:
    explicit WrappingLabel(QWidget* parent = nullptr);

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    struct Measured {
        int width = -1;
        int lines = 0;
        QString text;
        QFont font;
    };

    int maximumLines() const;
    /// Number of lines that the text takes at a width, up to the maximum; paints them when there is a
    /// painter.
    int layOut(int width, QPainter* painter, bool* cut = nullptr) const;

    mutable Measured known_;
};

} // namespace toolkit::qt
