#pragma once

#include <QLineEdit>

#include <functional>

namespace toolkit::qt {

/// A line edit that tells each key press before it acts on it.
class LineEdit : public QLineEdit {
public:
    explicit LineEdit(QWidget* parent = nullptr);

    /// Gets the character of a key press: those that make a character, the control characters among them
    /// (backspace 8, Ctrl+V 22). Keys that belong to the window (tab, enter, escape) are left out.
    std::function<void(char32_t)> onKeyPress;
    /// Gets the text after the user changed it, by whatever means. A change that no key press announced (drag
    /// and drop, the context menu) is announced as Ctrl+V.
    std::function<void(const QString&)> onTyped;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;

private:
    void announce(const QString& characters);
    void edited(const QString& text);

    bool announced_ = false;
};

} // namespace toolkit::qt
