// How well a colour can be told from another one, by WCAG 2.1.
#pragma once

#include "toolkit/color.h"

#include <initializer_list>

namespace toolkit {

/// What letters, and what lines and other marks need; with something to spare, as their edges are smoothed.
constexpr double textContrast = 5;
constexpr double markContrast = 3.3;

/// 1 for equal colours to 21 for black and white.
/// https://www.w3.org/TR/WCAG21/#dfn-contrast-ratio
double contrast(Color one, Color other);

/// The colour, moved towards `strong` just so far that it has at least that contrast to all of the grounds;
/// `strong` itself where that is not enough.
Color readable(Color color, Color strong, std::initializer_list<Color> grounds, double least);

} // namespace toolkit
