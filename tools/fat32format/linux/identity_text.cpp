#include "tools/fat32format/linux/identity_text.h"

#include "platform/linux/base/percent_text.h"

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

} // namespace

std::optional<DiskIdentity> parseIdentity(std::string_view text) {
    DiskIdentity identity;
    if (!takePrefix(text, "sequence=")) return std::nullopt;
    identity.sequence = takeNumber(text);
    if (!takePrefix(text, ",size=")) return std::nullopt;
    identity.bytes = takeNumber(text);
    if (!takePrefix(text, ",serial=")) return std::nullopt;
    const auto serial = platform::linux::percentDecoded(text);
    if (!serial || identity.sequence == 0 || identity.bytes == 0) return std::nullopt;
    identity.serial = *serial;
    return identity;
}

} // namespace fat32format
