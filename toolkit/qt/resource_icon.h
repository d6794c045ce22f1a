// Icons among the program's own resources.
#pragma once

#include <QIcon>

namespace toolkit::qt {

/// The icon of that folder of the resources, `103.png` and the like in it by their sizes in pixels; null
/// where there is none. A size is decoded when it is drawn or asked for, and without Qt's readers of
/// pictures: the first of them to be used loads all of them, which would keep the window waiting.
QIcon resourceIcon(const QString& folder);

/// A PNG file's picture; null when it is none. For the program's own files only.
QImage readPng(const QByteArray& file);

} // namespace toolkit::qt
