#include "toolkit/qt/form_window.h"

#include "toolkit/qt/presentation.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QLayout>
#include <QScreen>

#include <algorithm>

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

} // namespace

void FormWindow::present(QWidget* owner, Qt::WindowModality modality) {
    if (isVisible()) {
        raise();
        activateWindow();
        return;
    }
    setParent(owner, owner == nullptr ? Qt::Window : Qt::Dialog);
    setWindowModality(modality);
    show();
}

void FormWindow::fitScreen() {
    activateLayouts(*this);
    const QSize wanted = sizeHint().boundedTo(screen()->availableSize());
    resize(isVisible() ? size().expandedTo(wanted) : wanted);
}

void FormWindow::watchEnter() {
    for (auto* button : findChildren<QAbstractButton*>())
        button->installEventFilter(this);
    connect(qApp, &QApplication::focusChanged, this, [this](const QWidget*, const QWidget* now) {
        if (now != nullptr && now->window() == this && onFocusMoved) onFocusMoved(now);
    });
}

/// The dialog's own way would press the button that is shown as the default one.
void FormWindow::keyPressEvent(QKeyEvent* event) {
    if (!handleEnter(*event)) QDialog::keyPressEvent(event);
}

bool FormWindow::eventFilter(QObject* object, QEvent* event) {
    const bool key = event->type() == QEvent::KeyPress;
    return (key && handleEnter(*static_cast<QKeyEvent*>(event))) || QDialog::eventFilter(object, event);
}

bool FormWindow::handleEnter(const QKeyEvent& event) {
    if (event.key() != Qt::Key_Return && event.key() != Qt::Key_Enter) return false;
    const auto report = onEnter; // a copy: the window may go while the wish is granted
    if (report) report(focusWidget());
    return true;
}

void FormWindow::reject() {
    if (isModal()) requestClose();
}

void FormWindow::changeEvent(QEvent* event) {
    QDialog::changeEvent(event);
    if (event->type() != QEvent::FontChange || layout() == nullptr) return;
    applyPresentation(*this);
    if (isVisible()) fitScreen();
}

void FormWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    requestClose();
}

void FormWindow::requestClose() {
    // A copy: the window may go while the wish is granted.
    const auto report = onCloseRequested;
    if (report) report();
}

} // namespace toolkit::qt
