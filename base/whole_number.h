#pragma once

#include <charconv>
#include <optional>
#include <string_view>

namespace base {

/// The number that the whole text is, in digits without blanks, with a minus at the most; no value when it is
/// none, or does not fit.
template <typename Number>
std::optional<Number> wholeNumber(std::string_view text, int digits = 10) {
    Number number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, digits);
    if (error != std::errc() || stop != end) return std::nullopt;
    return number;
}

} // namespace base
