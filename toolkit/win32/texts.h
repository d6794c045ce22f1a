// Texts on their way between the core (UTF-8, lines end in CR LF) and the windows (UTF-16).
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace toolkit::win32 {

std::wstring fromUtf8(std::string_view text);
std::string toUtf8(std::wstring_view text);

/// The text of a window of this process.
std::wstring windowText(HWND window);
/// Leaves a window alone that shows the text already: it would be painted anew.
void setWindowText(HWND window, const std::wstring& text);

/// The letter that a caption marks as its access key; 0 for none.
wchar_t accessKey(const std::wstring& caption);
/// The caption as people read it.
std::wstring withoutMnemonic(const std::wstring& caption);
/// A caption with the access key marked where the letter first occurs. Every "&" of the caption itself is
/// shown as such.
std::wstring withMnemonic(const std::wstring& caption, wchar_t key);

/// Position in UTF-16 units of the character (code point) of that number; the end of the text when it has
/// fewer.
std::size_t utf16Position(const std::wstring& text, std::size_t character);

} // namespace toolkit::win32
