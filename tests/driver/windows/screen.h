// What is on the screen, by its pixels.
#pragma once

#include <windows.h>

#include <vector>

namespace probe {

/// The pixels of a rectangle of the screen, row by row, once the window there has painted itself.
std::vector<COLORREF> pixels(HWND window, const RECT& rectangle);

/// Which of the message boxes' icons is shown: 16, 48 or 64; 0 for none.
int systemIconAt(const std::vector<COLORREF>& shown, const RECT& rectangle);

/// Whether a text is in the colour of disabled ones.
bool drawnDisabled(const std::vector<COLORREF>& shown);

/// Whether there is anything in colour.
bool hasPicture(const std::vector<COLORREF>& shown);

} // namespace probe
