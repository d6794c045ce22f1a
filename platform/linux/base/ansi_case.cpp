#include "platform/linux/base/ansi_case.h"

#include "base/letters.h"

#include <algorithm>

namespace platform::linux {

namespace {

char upper(char character) {
    const auto c = static_cast<unsigned char>(character);
    const bool latin = c >= 0xE0 && c <= 0xFE && c != 0xF7; // 0xF7 is the division sign
    if (latin) return static_cast<char>(c - 0x20);
    if (c == 0x9A || c == 0x9C || c == 0x9E) return static_cast<char>(c - 0x10); // š, œ, ž
    return c == 0xFF ? '\x9F' : base::upper(character);                          // ÿ
}

} // namespace

std::string ansiUpper(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), upper);
    return result;
}

bool isSameAnsi(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return upper(x) == upper(y); });
}

} // namespace platform::linux
