#include "toolkit/message_box.h"

#include "toolkit/backend.h"
#include "toolkit/qt/form_window.h"
#include "toolkit/qt/front_again.h"
#include "toolkit/qt/texts.h"

#include <QAbstractButton>
#include <QMessageBox>
#include <QPushButton>

#include <vector>

namespace toolkit {

namespace qt {

namespace {

struct Choice {
    MessageAnswer answer;
    const char* caption;
    QMessageBox::ButtonRole role;
};

constexpr int buttonMask = 0x0f;
constexpr int iconMask = 0xf0;
constexpr auto programTitle = "Orvanta USB-Stick Internetupdate Tool";

/// The last one is what closing the box means.
std::vector<Choice> choices(int style) {
    switch (style & buttonMask) {
    case OkCancel:
        return {{Ok, "&OK", QMessageBox::AcceptRole}, {Cancel, "&Abbrechen", QMessageBox::RejectRole}};
    case YesNo:
        return {{Yes, "&Ja", QMessageBox::YesRole}, {No, "&Nein", QMessageBox::NoRole}};
    default:
        return {{Ok, "&OK", QMessageBox::AcceptRole}};
    }
}

QMessageBox::Icon icon(int style) {
    switch (style & iconMask) {
    case Critical:
        return QMessageBox::Critical;
    case Exclamation:
        return QMessageBox::Warning;
    case Information:
        return QMessageBox::Information;
    default:
        return QMessageBox::NoIcon;
    }
}

/// A box is as wide as its longest word. A longer one than this may be broken, at a space without a width.
QString withBreaks(const QString& text) {
    constexpr int longestWord = 60;
    constexpr QChar space(0x200B);
    QString broken;
    int length = 0;
    for (const QChar letter : text) {
        length = letter.isSpace() ? 0 : length + 1;
        if (length > longestWord && !letter.isLowSurrogate()) {
            broken += space;
            length = 1;
        }
        broken += letter;
    }
    return broken;
}

} // namespace

} // namespace qt

int backend::showMessage(std::string_view text, int style, std::string_view title) {
    const qt::FrontAgain frontAgain;
    QMessageBox box(qt::FormWindow::front());
    box.setObjectName(QStringLiteral("MessageBox"));
    box.setTextFormat(Qt::PlainText);
    box.setText(qt::withBreaks(qt::lines(text)));
    box.setIcon(qt::icon(style));
    box.setWindowTitle(title.empty() ? QString::fromLatin1(qt::programTitle) : qt::fromUtf8(title));
    const std::vector<qt::Choice> choices = qt::choices(style);
    std::vector<QPushButton*> buttons;
    buttons.reserve(choices.size());
    for (const qt::Choice& choice : choices)
        buttons.push_back(box.addButton(QString::fromLatin1(choice.caption), choice.role));
    box.setDefaultButton((style & SecondButtonFirst) != 0 ? buttons.at(1) : buttons.front());
    box.setEscapeButton(buttons.back());
    box.exec();
    for (std::size_t i = 0; i < buttons.size(); ++i)
        if (box.clickedButton() == buttons[i]) return choices[i].answer;
    return choices.back().answer;
}

} // namespace toolkit
