// Text at the border to Windows' functions for UTF-16; what cannot be converted becomes U+FFFD.
// https://learn.microsoft.com/windows/win32/api/stringapiset/nf-stringapiset-multibytetowidechar
#pragma once

#include <string>
#include <string_view>

namespace platform::windows {

/// The text in UTF-16.
std::wstring wide(std::string_view utf8);
/// The text in UTF-8.
std::string narrow(std::wstring_view text);
/// Whether nothing in it is anything else.
bool isUtf8(std::string_view text);

} // namespace platform::windows
