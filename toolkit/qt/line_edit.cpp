#include "toolkit/qt/line_edit.h"

#include <QInputMethodEvent>
#include <QKeyEvent>

namespace toolkit::qt {

namespace {

constexpr char16_t ctrlV = 22;

QString charactersOf(const QKeyEvent& event) {
    switch (event.key()) {
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Escape:
        return {};
    default:
        break;
    }
    if ((event.modifiers() & (Qt::AltModifier | Qt::MetaModifier)) != 0) return {};
    if (event.key() == Qt::Key_Backspace) return {QChar(u'\b')};
    // Not every platform gives the control character itself.
    const bool letter = event.key() >= Qt::Key_A && event.key() <= Qt::Key_Z;
    if (letter && (event.modifiers() & Qt::ControlModifier) != 0)
        return {QChar(static_cast<char16_t>(event.key() - Qt::Key_A + 1))};
    return event.text();
}

} // namespace

LineEdit::LineEdit(QWidget* parent) : QLineEdit(parent) {
    connect(this, &QLineEdit::textEdited, this, &LineEdit::edited);
}

void LineEdit::keyPressEvent(QKeyEvent* event) {
    announce(charactersOf(*event));
    QLineEdit::keyPressEvent(event);
    announced_ = false;
}

void LineEdit::inputMethodEvent(QInputMethodEvent* event) {
    announce(event->commitString());
    QLineEdit::inputMethodEvent(event);
    announced_ = false;
}

void LineEdit::announce(const QString& characters) {
    for (const char32_t character : characters.toUcs4()) {
        announced_ = true;
        if (onKeyPress) onKeyPress(character);
    }
}

void LineEdit::edited(const QString& text) {
    if (!announced_) announce(QString(QChar(ctrlV)));
    announced_ = false;
    if (onTyped) onTyped(text);
}

} // namespace toolkit::qt
