// What a layout cannot say in figures that fit every font: relative text sizes, and room counted in
// characters.
#pragma once

#include <QWidget>

namespace toolkit::qt {

/// Gives the window the program's font: Tahoma where it is installed, in the desktop's size, else the
/// desktop's own.
void setProgramFont(QWidget& window);

/// Applies the dynamic properties of the layout's parts; to be called again when the window's font has
/// changed.
///
///     textStyle           "title", "heading", "strong" or "fixed" (all characters of one width)
///     minimumCharacters   room for that many characters, of the part's own font
///     minimumLines        room for that many lines
///     columnGap           room between the columns of the part's layout, in characters
///     margin              room around them, in characters
///     flat                true leaves next to none above and below
///     accent              true draws a line in the desktop's accent colour
void applyPresentation(QWidget& window);

} // namespace toolkit::qt
