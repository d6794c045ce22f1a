#pragma once

#include <QFocusFrame>
#include <QPointer>

#include <vector>

namespace toolkit::qt {

/// A frame around the part that has the keyboard, in whichever window that is. One for the program, as long
/// as the program runs.
///
/// (Of QFocusFrame it only is one, so that screen readers pass it over. That one's own way leaves frames
/// standing outside of what was scrolled away.)
class FocusFrame : public QFocusFrame {
public:
    FocusFrame();
    ~FocusFrame() override;

protected:
    bool eventFilter(QObject* object, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void follow(QWidget* part);
    void place();

    QPointer<QWidget> part_;
    std::vector<QPointer<QWidget>> watched_; ///< the part and what it lies in, up to the frame's parent
};

} // namespace toolkit::qt
