#pragma once

#include <QProgressBar>
#include <QTimer>

namespace toolkit::qt {

/// A native bar with a text above it. Without a bar the text has all of the room, which is that of two lines
/// from the start; what does not fit ends in dots, and is in the tool tip as a whole.
class ProgressBarWidget : public QProgressBar {
    Q_OBJECT

public:
    explicit ProgressBarWidget(QWidget* parent = nullptr);

    QString text() const override { return text_; }
    void setText(const QString& text);

    bool hasBar() const { return hasBar_; }
    int share() const { return share_; }
    /// No bar.
    void showNothing();
    /// Of `fullBar`. Each quarter is spoken, with the text that it gets.
    void showShare(int share);
    /// A bar that moves.
    void showBusy();

    /// Speaks the text.
    void alert();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    static constexpr int fullBar = 1000;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QRect textRoom() const;
    QRect barRoom() const;
    void setHasBar(bool hasBar);
    void tellText();

    QTimer telling_; ///< runs until a step has taken a while
    QString text_;
    QString told_; ///< what screen readers were told last
    int share_ = 0;
    bool hasBar_ = false;
    bool spoken_ = false; ///< the text of this quarter
};

} // namespace toolkit::qt
