// Text at the border to Windows' ANSI functions: UTF-8 inside the program, the system's ANSI code page
// outside. https://learn.microsoft.com/windows/win32/intl/code-pages
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform::windows {

/// The text in the ANSI code page; no value when one of its characters has no place there or when it is not
/// UTF-8. For names: a name that is merely similar may be another file's.
std::optional<std::string> exactAnsi(std::string_view utf8);

/// The text in the ANSI code page, the nearest character or "?" for what has no place there. For what people
/// read.
std::string nearestAnsi(std::string_view utf8);

/// Text of the ANSI code page in UTF-8.
std::string utf8FromAnsi(std::string_view ansi);

} // namespace platform::windows
