// The texts of labels, measured and drawn in one way.
#pragma once

#include <windows.h>

namespace toolkit::win32 {

/// What a text needs that has lines of that width.
SIZE textSize(HWND label, LONG width);

/// Its height in a label of that width; of one so long that no label has room for it a guess, which takes no
/// time.
LONG textHeight(HWND label, LONG width);

LONG lineHeight(HWND label);

/// Lines break inside of a word, too, when the word is too long for one; what has no room may end in dots. In
/// a font that was asked for because all of its characters are equally wide, words stand below each other
/// where they have the same number of characters in front of them, whatever font the system took.
void paintText(HWND label, HDC context, const RECT& room, COLORREF color, bool dots);

} // namespace toolkit::win32
