#include "platform/windows/wide_text.h"

#include <windows.h>

namespace platform::windows {

std::wstring wide(std::string_view utf8) {
    std::wstring text(utf8.size(), L'\0'); // it never has more units than the UTF-8 has bytes
    const int size = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), text.data(),
                                         static_cast<int>(text.size()));
    text.resize(static_cast<std::size_t>(size));
    return text;
}

std::string narrow(std::wstring_view text) {
    constexpr std::size_t longestUnit = 3; // bytes
    std::string utf8(text.size() * longestUnit, '\0');
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), utf8.data(),
                                         static_cast<int>(utf8.size()), nullptr, nullptr);
    utf8.resize(static_cast<std::size_t>(size));
    return utf8;
}

bool isUtf8(std::string_view text) {
    return text.empty() || MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(),
                                               static_cast<int>(text.size()), nullptr, 0) != 0;
}

} // namespace platform::windows
