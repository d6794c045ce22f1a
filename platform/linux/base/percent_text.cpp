#include "platform/linux/base/percent_text.h"

#include "base/whole_number.h"

namespace platform::linux {

namespace {

bool isPlain(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

/// Two hexadecimal digits; no value when they are none.
std::optional<char> hexadecimal(std::string_view digits) {
    const auto value = digits.size() == 2 ? base::wholeNumber<unsigned char>(digits, 16) : std::nullopt;
    return value ? std::optional(static_cast<char>(*value)) : std::nullopt;
}

} // namespace

std::string percentEncoded(std::string_view text, std::string_view plain) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (isPlain(c) || plain.find(c) != std::string_view::npos)
            result += c;
        else
            result += {'%', digits[byte / digits.size()], digits[byte % digits.size()]};
    }
    return result;
}

std::optional<std::string> percentDecoded(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const char first = text.front();
        text.remove_prefix(1);
        if (first != '%') {
            result += first;
            continue;
        }
        const auto character = hexadecimal(text.substr(0, 2));
        if (!character) return std::nullopt;
        result += *character;
        text.remove_prefix(2);
    }
    return result;
}

} // namespace platform::linux
