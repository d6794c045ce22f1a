// UTF-8 outside, UTF-16 where Windows is asked.
#pragma once

#include <string>
#include <string_view>

namespace probe {

std::string utf8(std::wstring_view text);
std::wstring wide(std::string_view text);

/// As a person reads it: without the marks of access keys.
std::wstring withoutMnemonic(std::wstring_view text);

/// The letter behind the mark, in capitals; 0 when there is none.
wchar_t mnemonic(std::wstring_view text);

} // namespace probe
