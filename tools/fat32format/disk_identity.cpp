#include "tools/fat32format/disk_identity.h"

#include <charconv>

namespace fat32format {

namespace {

bool takePrefix(std::string_view& text, std::string_view prefix) {
    if (!text.starts_with(prefix)) return false;
    text.remove_prefix(prefix.size());
    return true;
}

/// A decimal number above 0; 0 when there is none.
std::uint64_t takeNumber(std::string_view& text) {
    std::uint64_t number = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (failure != std::errc()) return 0;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

/// Two hexadecimal digits; no value when they are none.
std::optional<char> hexadecimal(std::string_view digits) {
    unsigned value = 0;
    const char* const end = digits.data() + digits.size();
    const auto result = std::from_chars(digits.data(), end, value, 16);
    if (digits.size() != 2 || result.ec != std::errc() || result.ptr != end) return std::nullopt;
    return static_cast<char>(value);
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

} // namespace

std::optional<DiskIdentity> parseIdentity(std::string_view text) {
    DiskIdentity identity;
    if (!takePrefix(text, "sequence=")) return std::nullopt;
    identity.sequence = takeNumber(text);
    if (!takePrefix(text, ",size=")) return std::nullopt;
    identity.bytes = takeNumber(text);
    if (!takePrefix(text, ",serial=")) return std::nullopt;
    const auto serial = percentDecoded(text);
    if (!serial || identity.sequence == 0 || identity.bytes == 0) return std::nullopt;
    identity.serial = *serial;
    return identity;
}

} // namespace fat32format
