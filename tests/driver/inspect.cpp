#include "tests/driver/inspect.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QTextDocumentFragment>

namespace driver {

namespace {

/// As a person reads it.
QString withoutMnemonic(QString text) {
    for (qsizetype i = 0; i < text.size(); ++i)
        if (text[i] == QLatin1Char('&')) text.remove(i, 1);
    return text;
}

QString plain(const QString& text) {
    return Qt::mightBeRichText(text) ? QTextDocumentFragment::fromHtml(text).toPlainText() : text;
}

QString shownText(const QWidget& part) {
    if (const auto* button = qobject_cast<const QAbstractButton*>(&part))
        return withoutMnemonic(button->text());
    if (const auto* group = qobject_cast<const QGroupBox*>(&part)) return withoutMnemonic(group->title());
    if (const auto* box = qobject_cast<const QComboBox*>(&part)) return box->currentText();
    if (const auto* label = qobject_cast<const QLabel*>(&part))
        return label->buddy() == nullptr ? label->text() : withoutMnemonic(label->text());
    return part.isWindow() ? part.windowTitle() : part.property("text").toString();
}

QJsonArray rectangle(const QRect& r) {
    return {r.x(), r.y(), r.width(), r.height()};
}

QString accessibleText(const QWidget& part, QAccessible::Text kind) {
    const QAccessibleInterface* interface =
        QAccessible::queryAccessibleInterface(const_cast<QWidget*>(&part));
    return interface == nullptr ? QString() : interface->text(kind);
}

/// The room that the text wants: width and height, or no width and the height at its present width.
QJsonArray wantedSize(const QWidget& part) {
    if (part.hasHeightForWidth()) return {0, part.heightForWidth(part.width())};
    return {part.sizeHint().width(), part.sizeHint().height()};
}

/// Whether markup in the text would be shown as it stands.
bool showsPlainText(const QString& text, Qt::TextFormat format) {
    return format == Qt::PlainText || (format == Qt::AutoText && !Qt::mightBeRichText(text));
}

void describeState(const QWidget& part, QJsonObject& result) {
    if (const auto* label = qobject_cast<const QLabel*>(&part))
        result[QLatin1String("plainText")] = showsPlainText(label->text(), label->textFormat());
    if (const auto* button = qobject_cast<const QAbstractButton*>(&part)) {
        result[QLatin1String("checked")] = button->isChecked();
        result[QLatin1String("shortcut")] = button->shortcut().toString(QKeySequence::PortableText);
    }
    if (const auto* box = qobject_cast<const QComboBox*>(&part)) {
        QJsonArray items;
        for (int i = 0; i < box->count(); ++i)
            items.append(box->itemText(i));
        result[QLatin1String("items")] = items;
        result[QLatin1String("index")] = box->currentIndex();
    }
    if (const auto* edit = qobject_cast<const QLineEdit*>(&part)) {
        result[QLatin1String("readOnly")] = edit->isReadOnly();
        result[QLatin1String("selectionStart")] = edit->selectionStart();
        result[QLatin1String("selectedText")] = edit->selectedText();
    }
    if (qobject_cast<const QLabel*>(&part) != nullptr && part.autoFillBackground())
        result[QLatin1String("background")] = part.palette().color(QPalette::Window).name();
    if (part.property("pictureSize").isValid()) {
        const QSize size = part.property("pictureSize").toSize();
        result[QLatin1String("pictureSize")] = QJsonArray{size.width(), size.height()};
    }
    if (part.property("hasPicture").isValid())
        result[QLatin1String("hasPicture")] = part.property("hasPicture").toBool();
}

void describeList(const QWidget& part, QJsonObject& result) {
    const auto* view = qobject_cast<const QAbstractItemView*>(&part);
    if (view == nullptr || view->model() == nullptr) return;
    const QAbstractItemModel& model = *view->model();
    QJsonArray headers;
    QJsonArray widths;
    const auto* header = view->findChild<QHeaderView*>();
    for (int column = 0; column < model.columnCount(); ++column) {
        headers.append(model.headerData(column, Qt::Horizontal).toString());
        if (header != nullptr) widths.append(header->sectionSize(column));
    }
    QJsonArray rows;
    QJsonArray rowToolTips;
    for (int row = 0; row < model.rowCount(); ++row) {
        rowToolTips.append(plain(model.index(row, 0).data(Qt::ToolTipRole).toString()));
        QJsonArray cells;
        for (int column = 0; column < model.columnCount(); ++column)
            cells.append(model.index(row, column).data().toString());
        rows.append(cells);
    }
    result[QLatin1String("headers")] = headers;
    result[QLatin1String("columnWidths")] = widths;
    result[QLatin1String("rows")] = rows;
    result[QLatin1String("rowToolTips")] = rowToolTips;
    result[QLatin1String("row")] = view->currentIndex().row();
}

bool named(const QWidget& part) {
    return !part.objectName().isEmpty() && !part.objectName().startsWith(QLatin1String("qt_"));
}

const QMessageBox* openMessageBox() {
    return qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
}

} // namespace

QWidget* findWindow(const QString& name) {
    if (name.isEmpty()) {
        if (QWidget* modal = QApplication::activeModalWidget()) return modal;
        if (QWidget* active = QApplication::activeWindow()) return active;
    }
    QWidget* found = nullptr;
    for (QWidget* window : QApplication::topLevelWidgets()) {
        const bool wanted = name.isEmpty() ? window->isVisible() : window->objectName() == name;
        if (wanted && (found == nullptr || window->isVisible())) found = window;
    }
    return found;
}

QWidget* findPart(const QString& window, const QString& name) {
    QWidget* top = findWindow(window);
    if (top == nullptr) return nullptr;
    if (top->objectName() == name) return top;
    if (auto* part = top->findChild<QWidget*>(name)) return part;
    if (!window.isEmpty()) return nullptr;
    QWidget* found = nullptr;
    for (const QWidget* other : QApplication::topLevelWidgets())
        if (auto* part = other->findChild<QWidget*>(name);
            part != nullptr && (found == nullptr || other->isVisible()))
            found = part;
    return found;
}

QJsonArray describeWindows() {
    QJsonArray windows;
    for (const QWidget* window : QApplication::topLevelWidgets()) {
        if (!named(*window)) continue;
        windows.append(QJsonObject{{QStringLiteral("name"), window->objectName()},
                                   {QStringLiteral("title"), window->windowTitle()},
                                   {QStringLiteral("visible"), window->isVisible()},
                                   {QStringLiteral("modal"), window->isModal()},
                                   {QStringLiteral("active"), window->isActiveWindow()},
                                   {QStringLiteral("minimized"), window->isMinimized()},
                                   {QStringLiteral("hasIcon"), !window->windowIcon().isNull()},
                                   {QStringLiteral("geometry"), rectangle(window->geometry())}});
    }
    return windows;
}

QJsonObject describe(const QWidget& part) {
    const QPoint position = part.isWindow() ? part.pos() : part.mapTo(part.window(), QPoint());
    QJsonObject result{
        {QStringLiteral("name"), part.objectName()},
        {QStringLiteral("class"), QString::fromLatin1(part.metaObject()->className())},
        {QStringLiteral("window"), part.window()->objectName()},
        {QStringLiteral("text"), shownText(part)},
        {QStringLiteral("visible"), part.isVisible()},
        {QStringLiteral("enabled"), part.isEnabled()},
        {QStringLiteral("focus"), part.hasFocus()},
        {QStringLiteral("toolTip"), plain(part.toolTip())},
        {QStringLiteral("accessibleName"), accessibleText(part, QAccessible::Name)},
        {QStringLiteral("accessibleDescription"), accessibleText(part, QAccessible::Description)},
        {QStringLiteral("geometry"), rectangle(QRect(position, part.size()))},
        {QStringLiteral("wantedSize"), wantedSize(part)}};
    describeState(part, result);
    describeList(part, result);
    return result;
}

QJsonArray describeParts(const QWidget& window) {
    QJsonArray parts;
    for (const QWidget* part : window.findChildren<QWidget*>())
        if (part->window() == &window && part->isVisible() && named(*part)) parts.append(describe(*part));
    return parts;
}

QJsonValue describeMessageBox() {
    const QMessageBox* box = openMessageBox();
    if (box == nullptr) return QJsonValue::Null;
    QJsonArray buttons;
    for (const QAbstractButton* button : box->buttons())
        buttons.append(withoutMnemonic(button->text()));
    constexpr int noIcon = 0;
    constexpr int information = 64;
    constexpr int warning = 48;
    constexpr int critical = 16;
    const QHash<int, int> icons = {{QMessageBox::Information, information},
                                   {QMessageBox::Warning, warning},
                                   {QMessageBox::Critical, critical}};
    return QJsonObject{{QStringLiteral("title"), box->windowTitle()},
                       {QStringLiteral("text"), box->text().remove(QChar(0x200B))}, // as a person reads it
                       {QStringLiteral("plainText"), showsPlainText(box->text(), box->textFormat())},
                       {QStringLiteral("icon"), icons.value(box->icon(), noIcon)},
                       {QStringLiteral("buttons"), buttons}};
}

QWidget* messageBoxButton(const QString& caption) {
    const QMessageBox* box = openMessageBox();
    if (box == nullptr) return nullptr;
    for (QAbstractButton* button : box->buttons())
        if (withoutMnemonic(button->text()) == caption) return button;
    return nullptr;
}

} // namespace driver
