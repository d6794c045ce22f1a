// Characters. Inside the program text is UTF-8; the contents of files are Windows-1252, one character a byte.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace base {

/// Windows-1252 to UTF-8. The five bytes that have no character of their own become the control characters of
/// the same number, as Windows does it, so that every byte comes back from toAnsi().
std::string fromAnsi(std::string_view bytes);

/// UTF-8 to Windows-1252; "?" for a character that has no byte.
std::string toAnsi(std::string_view text);

/// Number of characters of a UTF-8 text; a byte that belongs to no character counts as one.
std::size_t characterCount(std::string_view text);

/// The first `count` characters of a UTF-8 text.
std::string_view firstCharacters(std::string_view text, std::size_t count);

} // namespace base
