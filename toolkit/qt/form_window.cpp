#include "toolkit/qt/form_window.h"

#include "toolkit/qt/presentation.h"
#include "toolkit/qt/spoken_label.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QAccessibleWidget>
#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QLayout>
#include <QPushButton>
#include <QScreen>
#include <QTimer>
#include <QWindow>
#include <QtMath>

#include <algorithm>
#include <chrono>
#include <utility>
#include <vector>

namespace toolkit::qt {

namespace {

/// In a window that is not shown yet no layout hears of changes in the layouts inside of it: the inner ones
/// first.
void activateLayouts(QWidget& window) {
    const auto parts = window.findChildren<QWidget*>();
    std::for_each(parts.rbegin(), parts.rend(), [](const QWidget* part) {
        if (QLayout* layout = part->layout()) layout->activate();
    });
    window.layout()->activate();
}

/// All of them, the one that was active last at the end.
std::vector<FormWindow*>& formWindows() {
    static std::vector<FormWindow*> windows;
    return windows;
}

/// Screen readers read a dialog as a whole when it comes up; the main window is too large for that.
class WindowAccessible : public QAccessibleWidget {
public:
    explicit WindowAccessible(FormWindow* window) : QAccessibleWidget(window) {}

    QAccessible::Role role() const override {
        return widget()->windowType() == Qt::Dialog ? QAccessible::Dialog : QAccessible::Window;
    }
};

QAccessibleInterface* accessibleFactory(const QString&, QObject* object) {
    auto* window = dynamic_cast<FormWindow*>(object);
    return window == nullptr ? nullptr : new WindowAccessible(window);
}

/// Room for the frame that a Wayland compositor draws, which it tells nobody of: a title bar of two lines,
/// and as much below, for it may be the contents that it centres; thin sides. None where the frame is known,
/// and on other systems of windows.
QSize unknownFrame(const QWidget& window) {
    if (window.frameGeometry() != window.geometry()) return {0, 0};
    if (!QGuiApplication::platformName().startsWith(QLatin1String("wayland"))) return {0, 0};
    constexpr int sides = 8;
    return {sides, 4 * window.fontMetrics().height() + sides};
}

/// Of the room that the contents want, the window can be made smaller by so much.
constexpr int leastShare = 2;

} // namespace

FormWindow::FormWindow() {
    static const bool installed = (QAccessible::installFactory(accessibleFactory), true);
    static_cast<void>(installed);
    speakLabels();
    formWindows().push_back(this);
}

FormWindow::~FormWindow() {
    std::erase(formWindows(), this);
}

/// Right after a box has closed, or while another program is in front, none is active: then the one that was
/// it last is meant.
QWidget* FormWindow::front() {
    if (QWidget* const active = QApplication::activeWindow()) return active;
    const auto found = std::find_if(formWindows().rbegin(), formWindows().rend(),
                                    [](const FormWindow* window) { return window->isVisible(); });
    return found == formWindows().rend() ? nullptr : *found;
}

void FormWindow::present(QWidget* owner, Qt::WindowModality modality) {
    if (isVisible()) {
        raise();
        activateWindow();
        return;
    }
    const bool owned = owner != nullptr && owner->isVisible();
    setParent(owned ? owner : nullptr, owner == nullptr ? Qt::Window : Qt::Dialog);
    setWindowModality(modality);
    if (owner != nullptr) placeOver(owned ? owner->frameGeometry() : screen()->availableGeometry());
    appearing_ = true;
    chooseFirstFocus();
    create();
    windowHandle()->installEventFilter(this);
    show();
}

/// Where the first part is a button anyway it is the main button, so that the enter key means that one.
void FormWindow::chooseFirstFocus() {
    if (focusWidget() != nullptr) return;
    const QWidget* first = nextInFocusChain();
    while (first != this && (first->focusPolicy() & Qt::TabFocus) == 0)
        first = first->nextInFocusChain();
    if (qobject_cast<const QPushButton*>(first) == nullptr) return;
    for (auto* button : findChildren<QPushButton*>())
        if (button->isDefault() && button->isEnabled()) button->setFocus(Qt::OtherFocusReason);
}

void FormWindow::placeOver(const QRect& middle) {
    QRect place(QPoint(), size());
    place.moveCenter(middle.center());
    move(place.topLeft());
}

/// How large the frame is, is known when the desktop has drawn it. Where a point is no whole number of
/// pixels, both sides may be rounded up.
void FormWindow::keepOnScreen() {
    const int rounded = qCeil(devicePixelRatioF()) - qFloor(devicePixelRatioF());
    const QRect room = screen()->availableGeometry().adjusted(0, 0, -rounded, -rounded);
    const QSize frame = frameGeometry().size() - size();
    const QSize fitting = size().boundedTo(room.size() - frame);
    if (fitting != size()) resize(fitting);
    const QRect shown(frameGeometry().topLeft(), fitting + frame);
    const QPoint place(qBound(room.left(), shown.left(), room.right() + 1 - shown.width()),
                       qBound(room.top(), shown.top(), room.bottom() + 1 - shown.height()));
    if (place != shown.topLeft()) move(place);
}

void FormWindow::fitScreen() {
    activateLayouts(*this);
    const QSize room = screen()->availableSize() - (frameGeometry().size() - size()) - unknownFrame(*this);
    const QSize wanted = sizeHint().boundedTo(room);
    setMinimumSize((wanted / leastShare).expandedTo(layout()->totalMinimumSize()).boundedTo(wanted));
    resize(isVisible() ? size().expandedTo(wanted) : wanted);
}

void FormWindow::watchEnter() {
    for (auto* button : findChildren<QAbstractButton*>())
        button->installEventFilter(this);
    connect(qApp, &QApplication::focusChanged, this, [this](const QWidget*, const QWidget* now) {
        if (now != nullptr && now->window() == this && onFocusMoved) onFocusMoved(now);
    });
}

/// Escape is a wish to close a modal dialog only. The assistant has no way to cancel what it does.
void FormWindow::keyPressEvent(QKeyEvent* event) {
    if (handleEnter(*event)) return;
    if (event->matches(QKeySequence::Cancel) && isModal())
        requestClose();
    else if (event->key() == Qt::Key_F1 && event->modifiers() == Qt::NoModifier && !event->isAutoRepeat())
        report(onHelp);
    else
        event->ignore();
}

bool FormWindow::eventFilter(QObject* object, QEvent* event) {
    if (object == windowHandle()) {
        if (appearing_) appearingGoesOn(event->type());
        return false;
    }
    const bool key = event->type() == QEvent::KeyPress;
    return (key && handleEnter(*static_cast<QKeyEvent*>(event))) || QWidget::eventFilter(object, event);
}

/// The desktop takes several steps to place and to frame a window, and no event tells the last one.
void FormWindow::appearingGoesOn(QEvent::Type step) {
    constexpr std::chrono::milliseconds longest{500};
    if (step == QEvent::Expose) QTimer::singleShot(longest, this, [this] { appearing_ = false; });
    if (step == QEvent::Expose || step == QEvent::Move || step == QEvent::Resize)
        QMetaObject::invokeMethod(this, &FormWindow::keepOnScreen, Qt::QueuedConnection);
}

bool FormWindow::handleEnter(const QKeyEvent& event) {
    if (event.key() != Qt::Key_Return && event.key() != Qt::Key_Enter) return false;
    const auto report = onEnter; // a copy: the window may go while the wish is granted
    if (report) report(focusWidget());
    return true;
}

void FormWindow::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow()) {
        std::erase(formWindows(), this);
        formWindows().push_back(this);
    }
    if (event->type() != QEvent::FontChange || layout() == nullptr) return;
    applyPresentation(*this);
    if (isVisible()) fitScreen();
}

void FormWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    requestClose();
}

void FormWindow::requestClose() {
    report(onCloseRequested);
}

void FormWindow::report(const std::function<void()>& onWish) {
    const auto wish = onWish; // a copy: the window may go while the wish is granted
    if (wish) wish();
}

} // namespace toolkit::qt
