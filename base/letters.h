// ASCII letters and their case; every other byte is no letter and stays as it is.
#pragma once

#include <string>
#include <string_view>

namespace base {

constexpr char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr char upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

constexpr bool isLetter(char c) {
    return lower(c) >= 'a' && lower(c) <= 'z';
}

std::string lower(std::string_view text);
std::string upper(std::string_view text);

/// Whether two texts are the same, letters regardless of case.
bool sameNoCase(std::string_view a, std::string_view b);

/// Whether `text` begins with `prefix`, letters regardless of case.
bool startsWithNoCase(std::string_view text, std::string_view prefix);

} // namespace base
