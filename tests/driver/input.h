// Mouse and keyboard, as they come from the windowing system: what is disabled or blocked by a modal window
// is deaf.
#pragma once

#include <QEvent>
#include <QList>
#include <QPoint>
#include <QPointer>
#include <QRect>
#include <QStringList>
#include <QWidget>

namespace driver {

/// A widget may be gone by the time the input is made; then nothing happens.
using Target = QPointer<QWidget>;

void clickPart(const Target& part, int clicks);

/// One step of the mouse, at a point of a part.
struct MouseStep {
    QEvent::Type type; ///< MouseMove, MouseButtonPress or MouseButtonRelease
    QPoint point;
};

void moveMouse(const Target& part, const QList<MouseStep>& steps, Qt::MouseButton button);

/// Where a row of a list is shown; invalid when there is no such row, or the part is no list.
QRect rowRectangle(QWidget& list, int row);
void clickListRow(const Target& list, int row, int clicks);

/// Opens a drop-down list and chooses the entry of that index with the keyboard.
void chooseEntry(const Target& box, int index);

/// Types a text, then presses keys ("Tab", "Ctrl+V"), into whatever has the focus.
void typeKeys(const QString& text, const QStringList& keys);

/// Drags a text onto a part and drops it there, as from another program, which then keeps it no longer. True
/// when it was taken.
bool dropText(QWidget& part, const QString& text);

/// Writes a text as an input method does, which shows what it is made of first, into whatever has the focus.
void compose(const QString& shownFirst, const QString& text);

} // namespace driver
