// Web addresses as they may leave the program.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// The address with every character percent-escaped that no address may hold (blanks, control characters,
/// bytes of non-ASCII characters, one of `"<>\^`{|}`); what is legal, "%" included, stays as it is. No value
/// when the address does not begin with "http://" or "https://" and something behind it. Rules: RFC 3986,
/// https://www.rfc-editor.org/rfc/rfc3986#section-2
std::optional<std::string> httpAddress(std::string_view address);

/// Whether a redirect may lead from one address to another: not from https to anything less.
bool mayLeadTo(std::string_view from, std::string_view to);

} // namespace platform
