#include "tests/driver/screenshot.h"

#include "tests/driver/inspect.h"

#include <QApplication>
#include <QPainter>
#include <QPixmap>

#include <algorithm>

namespace driver {

namespace {

/// Owners before what they own, modal windows last.
QWidgetList windowsFromBelow() {
    QWidgetList windows;
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->isVisible() && !window->size().isEmpty()) windows.append(window);
    const auto depth = [](const QWidget* window) {
        int owners = 0;
        for (const QWidget* owner = window->parentWidget(); owner != nullptr; owner = owner->parentWidget())
            ++owners;
        return owners + (window->isModal() ? 1 : 0);
    };
    std::stable_sort(windows.begin(), windows.end(),
                     [&depth](const QWidget* a, const QWidget* b) { return depth(a) < depth(b); });
    return windows;
}

QPixmap allWindows() {
    const QWidgetList windows = windowsFromBelow();
    if (windows.isEmpty()) return {};
    QRect bounds;
    for (const QWidget* window : windows)
        bounds |= window->geometry();
    const qreal ratio = windows.first()->devicePixelRatioF();
    QPixmap picture(bounds.size() * ratio);
    picture.setDevicePixelRatio(ratio);
    picture.fill(QApplication::palette().color(QPalette::Dark));
    QPainter painter(&picture);
    for (QWidget* window : windows) {
        const QRect place = window->geometry().translated(-bounds.topLeft());
        painter.drawPixmap(place.topLeft(), window->grab());
        // There is no window manager to draw a frame.
        if (window != windows.first()) painter.drawRect(place.adjusted(-1, -1, 0, 0));
    }
    return picture;
}

QPalette darkPalette() {
    const QColor window(0x2b, 0x2d, 0x31);
    const QColor base(0x1e, 0x1f, 0x22);
    const QColor text(0xe6, 0xe6, 0xe6);
    const QColor faint(0x80, 0x83, 0x88);
    const QColor accent(0x3d, 0x8b, 0xd9);
    QPalette palette(text, QColor(0x3a, 0x3d, 0x42), QColor(0x5a, 0x5d, 0x63), QColor(0x18, 0x19, 0x1b),
                     QColor(0x40, 0x43, 0x48), text, Qt::white, base, window);
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::ToolTipBase, base);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, faint);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, faint);
    return palette;
}

} // namespace

bool saveScreenshot(const QString& window, const QString& path) {
    if (window.isEmpty()) return allWindows().save(path);
    QWidget* found = findWindow(window);
    return found != nullptr && found->grab().save(path);
}

void setDarkPalette(bool dark) {
    static const QPalette original = QApplication::palette();
    QApplication::setPalette(dark ? darkPalette() : original);
}

} // namespace driver
