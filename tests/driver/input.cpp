#include "tests/driver/input.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QDragEnterEvent>
#include <QInputMethodEvent>
#include <QKeySequence>
#include <QMimeData>
#include <QRadioButton>
#include <QScrollArea>
#include <QWindow>

// What QtTest itself makes events with, exported by QtGui for that purpose.
Q_GUI_EXPORT void qt_handleMouseEvent(QWindow* window, const QPointF& local, const QPointF& global,
                                      Qt::MouseButtons state, Qt::MouseButton button, QEvent::Type type,
                                      Qt::KeyboardModifiers modifiers, int timestamp);
Q_GUI_EXPORT void qt_handleKeyEvent(QWindow* window, QEvent::Type type, int key,
                                    Qt::KeyboardModifiers modifiers, const QString& text, bool repeated,
                                    ushort count);

namespace driver {

namespace {

/// Later than the last click by more than a double click takes, by the clock of the events.
int nextClickTime() {
    static int time = 1000;
    time += 1000;
    return time;
}

QPoint clickPoint(const QWidget& part) {
    // The label of these is as wide as its text; beside it nothing happens.
    const bool labelled =
        qobject_cast<const QCheckBox*>(&part) != nullptr || qobject_cast<const QRadioButton*>(&part);
    return labelled ? QPoint(part.height() / 2, part.height() / 2) : part.rect().center();
}

void showInScrollArea(QWidget& part) {
    for (QWidget* parent = part.parentWidget(); parent != nullptr; parent = parent->parentWidget())
        if (auto* area = qobject_cast<QScrollArea*>(parent)) area->ensureWidgetVisible(&part);
}

void clickAt(const Target& part, QPoint point, int clicks) {
    const QPointer<QWindow> window = part->window()->windowHandle();
    const QPointF local = part->mapTo(part->window(), point);
    const QPointF global = part->mapToGlobal(point);
    const int time = nextClickTime();
    for (int i = 0; i < clicks && window != nullptr; ++i) {
        qt_handleMouseEvent(window, local, global, Qt::LeftButton, Qt::LeftButton, QEvent::MouseButtonPress,
                            {}, time);
        if (window == nullptr) return;
        qt_handleMouseEvent(window, local, global, Qt::NoButton, Qt::LeftButton, QEvent::MouseButtonRelease,
                            {}, time);
    }
}

void press(int key, Qt::KeyboardModifiers modifiers, const QString& text) {
    QWidget* popup = QApplication::activePopupWidget();
    QPointer<QWindow> window = popup != nullptr ? popup->windowHandle() : QGuiApplication::focusWindow();
    if (window != nullptr) qt_handleKeyEvent(window, QEvent::KeyPress, key, modifiers, text, false, 1);
    if (window != nullptr) qt_handleKeyEvent(window, QEvent::KeyRelease, key, modifiers, text, false, 1);
}

QString textOfKey(int key, Qt::KeyboardModifiers modifiers) {
    switch (key) {
    case Qt::Key_Backspace:
        return QStringLiteral("\b");
    case Qt::Key_Delete:
        return QStringLiteral("\x7f");
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return QStringLiteral("\r");
    case Qt::Key_Escape:
        return QStringLiteral("\x1b");
    case Qt::Key_Tab:
        return QStringLiteral("\t");
    default:
        break;
    }
    const bool control = modifiers.testFlag(Qt::ControlModifier);
    if (control && key >= Qt::Key_A && key <= Qt::Key_Z) return {QChar(key - Qt::Key_A + 1)};
    if (key < Qt::Key_Escape && !control) return QString(QChar(key)).toLower();
    return {};
}

} // namespace

void clickPart(const Target& part, int clicks) {
    if (part == nullptr || part->window()->windowHandle() == nullptr) return;
    showInScrollArea(*part);
    clickAt(part, clickPoint(*part), clicks);
}

void moveMouse(const Target& part, const QList<MouseStep>& steps, Qt::MouseButton button) {
    if (part == nullptr || part->window()->windowHandle() == nullptr) return;
    const QPointer<QWindow> window = part->window()->windowHandle();
    const QPoint local = part->mapTo(part->window(), QPoint());
    const QPoint global = part->mapToGlobal(QPoint());
    const int time = nextClickTime();
    bool held = false;
    for (const MouseStep& step : steps) {
        if (window == nullptr) return;
        const bool move = step.type == QEvent::MouseMove;
        if (!move) held = step.type == QEvent::MouseButtonPress;
        qt_handleMouseEvent(window, local + step.point, global + step.point, held ? button : Qt::NoButton,
                            move ? Qt::NoButton : button, step.type, {}, time);
    }
}

QRect rowRectangle(QWidget& list, int row) {
    auto* view = qobject_cast<QAbstractItemView*>(&list);
    if (view == nullptr || view->model() == nullptr) return {};
    const QModelIndex index = view->model()->index(row, 0);
    view->scrollTo(index);
    return view->visualRect(index);
}

void clickListRow(const Target& list, int row, int clicks) {
    auto* view = qobject_cast<QAbstractItemView*>(list.data());
    if (view != nullptr) clickAt(view->viewport(), rowRectangle(*view, row).center(), clicks);
}

void chooseEntry(const Target& box, int index) {
    if (box == nullptr || !box->isEnabled()) return;
    box->activateWindow();
    box->setFocus(Qt::TabFocusReason);
    press(Qt::Key_F4, {}, {});
    press(Qt::Key_Home, {}, {});
    for (int i = 0; i < index; ++i)
        press(Qt::Key_Down, {}, {});
    press(Qt::Key_Return, {}, QStringLiteral("\r"));
}

void typeKeys(const QString& text, const QStringList& keys) {
    for (const QChar character : text)
        press(character.toUpper().unicode(), {}, QString(character));
    for (const QString& name : keys) {
        const QKeySequence sequence = QKeySequence::fromString(name, QKeySequence::PortableText);
        if (sequence.isEmpty()) continue;
        const QKeyCombination combination = sequence[0];
        press(combination.key(), combination.keyboardModifiers(),
              textOfKey(combination.key(), combination.keyboardModifiers()));
    }
}

void compose(const QString& shownFirst, const QString& text) {
    const QPointer<QObject> focus = QGuiApplication::focusObject();
    QInputMethodEvent shown(shownFirst, {});
    QInputMethodEvent committed;
    committed.setCommitString(text);
    if (focus != nullptr) QCoreApplication::sendEvent(focus, &shown);
    if (focus != nullptr) QCoreApplication::sendEvent(focus, &committed);
}

bool dropText(QWidget& part, const QString& text) {
    QMimeData data;
    data.setText(text);
    const QPoint point = part.mapTo(part.window(), part.rect().center());
    QDragEnterEvent enter(point, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QDropEvent drop(point, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QWindow* const window = part.window()->windowHandle();
    for (QEvent* event : {static_cast<QEvent*>(&enter), static_cast<QEvent*>(&drop)})
        QCoreApplication::sendEvent(window, event);
    return drop.isAccepted();
}

} // namespace driver
