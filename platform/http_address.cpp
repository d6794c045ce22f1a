#include "platform/http_address.h"

#include "base/letters.h"

namespace platform {

namespace {

constexpr std::string_view legalPunctuation = "-._~:/?#[]@!$&'()*+,;=%";

bool isLegal(char character) {
    return base::isLetter(character) || (character >= '0' && character <= '9') ||
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

bool mayLeadTo(std::string_view from, std::string_view to) {
    constexpr std::string_view secure = "https://";
    return !base::startsWithNoCase(from, secure) || base::startsWithNoCase(to, secure);
}

std::optional<std::string> httpAddress(std::string_view address) {
    for (const std::string_view scheme : {"http://", "https://"})
        if (base::startsWithNoCase(address, scheme) && address.size() > scheme.size())
            return escaped(address);
    return std::nullopt;
}

} // namespace platform
