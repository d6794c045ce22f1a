// Numbers as the user reads and writes them, with the user's decimal separator.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace platform {

/// At least one digit before the separator and exactly `decimals` behind it (the patterns "##0.#0" and
/// "##0.#00" with 2 and 3); halves are rounded away from zero. `value` is finite and below 10^15.
std::string formatNumber(double value, int decimals);

/// The number that a text stands for; blanks around it do not matter. Throws base::RuntimeError
/// (TypeMismatch) for a text that is no number.
double numberFromText(std::string_view text);

/// The same as a 16-bit whole number, halves rounded to the even neighbour. Throws base::RuntimeError
/// (Overflow) for a number that is too large, or too small.
std::int16_t integer16FromText(std::string_view text);

/// The whole number next to a value; halves go to the even one.
double roundHalfToEven(double value);

} // namespace platform
