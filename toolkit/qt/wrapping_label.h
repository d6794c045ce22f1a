#pragma once

#include <QLabel>

#include <vector>

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
    /// The text in lines of a width.
    struct Lines {
        int width = -1;
        QStringList shown;
        bool cut = false; ///< there is more of the text than the lines show
    };

    int maximumLines() const;
    const Lines& linesFor(int width) const;
    Lines layOut(int width) const;
    bool layOutParagraph(const QString& paragraph, Lines& lines) const;

    /// What is known of the text in the font; the last one was asked for last.
    mutable std::vector<Lines> known_;
    mutable QString knownText_;
    mutable QFont knownFont_;
};

} // namespace toolkit::qt
