// What a person, or a screen reader, finds in the windows.
#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QWidget>

namespace driver {

/// The window of that object name. An empty name is the window on top: the modal one, else the active one.
QWidget* findWindow(const QString& name);

/// The part of that object name in a window; without a window's name, in the one on top, else in any.
QWidget* findPart(const QString& window, const QString& name);

QJsonArray describeWindows();
QJsonObject describe(const QWidget& part);
/// All visible parts with a name of their own.
QJsonArray describeParts(const QWidget& window);

/// The open message box with title, text, icon number and buttons; null when there is none.
QJsonValue describeMessageBox();
/// Its button of that caption; null when there is none.
QWidget* messageBoxButton(const QString& caption);

} // namespace driver
