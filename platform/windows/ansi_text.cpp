#include "platform/windows/ansi_text.h"

#include <windows.h>

namespace platform::windows {

namespace {

/// No value when the bytes are not text of that code page.
std::optional<std::wstring> wide(UINT codePage, DWORD flags, std::string_view text) {
    if (text.empty()) return std::wstring();
    const int size = static_cast<int>(text.size());
    const int length = MultiByteToWideChar(codePage, flags, text.data(), size, nullptr, 0);
    if (length <= 0) return std::nullopt;
    std::wstring result(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(codePage, flags, text.data(), size, result.data(), length);
    return result;
}

std::string narrow(UINT codePage, DWORD flags, std::wstring_view text, BOOL* replaced) {
    if (text.empty()) return {};
    const int size = static_cast<int>(text.size());
    const int length = WideCharToMultiByte(codePage, flags, text.data(), size, nullptr, 0, nullptr, replaced);
    std::string result(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(codePage, flags, text.data(), size, result.data(), length, nullptr, replaced);
    return result;
}

} // namespace

std::optional<std::string> exactAnsi(std::string_view utf8) {
    const auto text = wide(CP_UTF8, MB_ERR_INVALID_CHARS, utf8);
    if (!text) return std::nullopt;
    BOOL replaced = FALSE;
    std::string ansi = narrow(CP_ACP, WC_NO_BEST_FIT_CHARS, *text, &replaced);
    if (replaced != FALSE) return std::nullopt;
    return ansi;
}

std::string nearestAnsi(std::string_view utf8) {
    return narrow(CP_ACP, 0, wide(CP_UTF8, 0, utf8).value_or(std::wstring()), nullptr);
}

std::string utf8FromAnsi(std::string_view ansi) {
    return narrow(CP_UTF8, 0, wide(CP_ACP, 0, ansi).value_or(std::wstring()), nullptr);
}

} // namespace platform::windows
