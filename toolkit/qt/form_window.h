#pragma once

#include <QDialog>

#include <functional>

namespace toolkit::qt {

/// The window of a form. It never closes by itself: a wish to close it is reported, and the form decides.
class FormWindow : public QDialog {
public:
    FormWindow() = default;

    std::function<void()> onCloseRequested;
    /// Enter was pressed, while that part (null for none) had the keyboard.
    std::function<void(const QWidget* focus)> onEnter;
    /// Another part of the window has the keyboard.
    std::function<void(const QWidget* focus)> onFocusMoved;

    /// Puts the window beside its owner (null for none) and on the screen.
    void present(QWidget* owner, Qt::WindowModality modality);

    /// Has Enter reported wherever the keyboard is: some desktops' buttons take it as a click of their own.
    void watchEnter();

    /// Gives the contents the room they want, as far as the screen allows; never takes any.
    void fitScreen();

    /// Escape; only a modal dialog takes it as a wish to close. The assistant has no way to cancel what it
    /// does.
    void reject() override;

protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* object, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    bool handleEnter(const QKeyEvent& event);
    void requestClose();
};

} // namespace toolkit::qt
