// Text in which some bytes stand as "%" and two hexadecimal digits.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform::linux {

/// Letters and digits of ASCII stand for themselves, and so do the characters of `plain`, which "%" is not
/// among.
std::string percentEncoded(std::string_view text, std::string_view plain = "-._");

/// No value where a "%" is not followed by two hexadecimal digits.
std::optional<std::string> percentDecoded(std::string_view text);

} // namespace platform::linux
