#include "platform/http_address.h"

#include <algorithm>

namespace platform {

namespace {

constexpr std::string_view legalPunctuation = "-._~:/?#[]@!$&'()*+,;=%";

char lower(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

bool isLegal(char character) {
    const char letter = lower(character);
    return (letter >= 'a' && letter <= 'z') || (character >= '0' && character <= '9') ||
           legalPunctuation.find(character) != std::string_view::npos;
}

std::string escaped(std::string_view text) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string result;
    result.reserve(text.size());
    for (const char character : text) {
        if (isLegal(character)) {
            result += character;
            continue;
        }
        const auto byte = static_cast<unsigned char>(character);
        result += '%';
        result += digits[byte >> 4U];
        result += digits[byte & 15U];
    }
    return result;
}

} // namespace

bool startsWithNoCase(std::string_view text, std::string_view prefix) {
    return text.size() >= prefix.size() &&
           std::equal(prefix.begin(), prefix.end(), text.begin(),
                      [](char left, char right) { return lower(left) == lower(right); });
}

bool mayLeadTo(std::string_view from, std::string_view to) {
    constexpr std::string_view secure = "https://";
    return !startsWithNoCase(from, secure) || startsWithNoCase(to, secure);
}

std::optional<std::string> httpAddress(std::string_view address) {
    for (const std::string_view scheme : {"http://", "https://"})
        if (startsWithNoCase(address, scheme) && address.size() > scheme.size()) return escaped(address);
    return std::nullopt;
}

} // namespace platform
