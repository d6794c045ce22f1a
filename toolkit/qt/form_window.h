#pragma once

#include <QEvent>
#include <QWidget>

#include <functional>

namespace toolkit::qt {

/// The window of a form. It never closes by itself: a wish to close it is reported, and the form decides.
///
/// It is no QDialog: Qt itself would put that on the screen, where the desktop knows a better place, and a
/// screen reader would read all of the main window to its user after every box.
class FormWindow : public QWidget {
public:
    FormWindow();
    ~FormWindow() override;

    /// The window that the user works with, or did before another program came to the front; null when none
    /// is shown.
    static QWidget* front();

    std::function<void()> onCloseRequested;
    /// Enter was pressed, while that part (null for none) had the keyboard.
    std::function<void(const QWidget* focus)> onEnter;
    /// The key for help was pressed.
    std::function<void()> onHelp;
    /// Another part of the window has the keyboard.
    std::function<void(const QWidget* focus)> onFocusMoved;

    /// Puts the window on the screen: over its owner; without one (null) where the desktop wants it. A modal
    /// one whose owner is not shown yet is in the middle of the screen.
    void present(QWidget* owner, Qt::WindowModality modality);

    /// Has Enter reported wherever the keyboard is: some desktops' buttons take it as a click of their own.
    void watchEnter();

    /// Gives the contents the room they want, as far as the screen allows; never takes any.
    void fitScreen();

protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* object, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    bool handleEnter(const QKeyEvent& event);
    void requestClose();
    static void report(const std::function<void()>& onWish);
    void chooseFirstFocus();
    void placeOver(const QRect& middle);
    void appearingGoesOn(QEvent::Type step);
    void keepOnScreen();

    bool appearing_ = false; ///< the desktop is still about to place it
};

} // namespace toolkit::qt
