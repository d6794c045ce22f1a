#pragma once

#include <QEvent>
#include <QLayout>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>

namespace toolkit::qt {

/// Scrolls what does not fit: a window with a very large font on a small screen, a text longer than its room.
/// It asks for all the room its contents want ("wantsContents"), or only for what its minimum says; the
/// keyboard reaches it when there is something to scroll.
class PageArea : public QScrollArea {
public:
    explicit PageArea(QWidget* parent = nullptr) : QScrollArea(parent) {
        connect(verticalScrollBar(), &QScrollBar::rangeChanged, this,
                [this](int, int end) { setFocusPolicy(end > 0 ? Qt::TabFocus : Qt::NoFocus); });
        setFocusPolicy(Qt::NoFocus);
    }

    QSize sizeHint() const override {
        if (!property("wantsContents").toBool() || widget() == nullptr) return minimumSize();
        // Broken lines need more height the less width the screen leaves.
        QSize size = widget()->sizeHint().boundedTo(screen()->availableSize());
        if (const QLayout* layout = widget()->layout(); layout != nullptr && layout->hasHeightForWidth())
            size.setHeight(layout->totalHeightForWidth(size.width()));
        return size + QSize(2 * frameWidth(), 2 * frameWidth());
    }
    QSize minimumSizeHint() const override { return {}; }

protected:
    /// What is behind it shows through: a frame has a tint of its own.
    bool event(QEvent* event) override {
        if (event->type() == QEvent::Polish) {
            viewport()->setAutoFillBackground(false);
            if (widget() != nullptr) widget()->setAutoFillBackground(false);
        }
        return QScrollArea::event(event);
    }
};

} // namespace toolkit::qt
