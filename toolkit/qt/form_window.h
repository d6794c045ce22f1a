#pragma once

#include <QDialog>

#include <functional>

namespace toolkit::qt {

/// The window of a form. It never closes by itself: a wish to close it is reported, and the form decides.
class FormWindow : public QDialog {
public:
    FormWindow() = default;

    std::function<void()> onCloseRequested;

    /// Puts the window beside its owner (null for none) and on the screen.
    void present(QWidget* owner, Qt::WindowModality modality);

    /// Gives the contents the room they want, as far as the screen allows; never takes any.
    void fitScreen();

    /// Escape; only a modal dialog takes it as a wish to close. The assistant has no way to cancel what it
    /// does.
    void reject() override;

protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void requestClose();
};

} // namespace toolkit::qt
