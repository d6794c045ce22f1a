#include "toolkit/win32/texts.h"

namespace toolkit::win32 {

namespace {

wchar_t upper(wchar_t letter) {
    const auto result =
        reinterpret_cast<ULONG_PTR>(CharUpperW(reinterpret_cast<LPWSTR>(std::uintptr_t{letter})));
    return static_cast<wchar_t>(result);
}

bool startsPair(const std::wstring& text, std::size_t position) {
    return position + 1 < text.size() && IS_HIGH_SURROGATE(text[position]) &&
           IS_LOW_SURROGATE(text[position + 1]);
}

} // namespace

std::wstring fromUtf8(std::string_view text) {
    const int length = static_cast<int>(text.size());
    std::wstring wide(
        static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0)), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), length, wide.data(), static_cast<int>(wide.size()));
    return wide;
}

std::string toUtf8(std::wstring_view text) {
    const int length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, utf8.data(), size, nullptr, nullptr);
    return utf8;
}

std::wstring windowText(HWND window) {
    std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
    const int length = GetWindowTextW(window, text.data(), static_cast<int>(text.size()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

void setWindowText(HWND window, const std::wstring& text) {
    if (windowText(window) != text) SetWindowTextW(window, text.c_str());
}

wchar_t accessKey(const std::wstring& caption) {
    for (std::size_t i = 0; i + 1 < caption.size(); ++i) {
        if (caption[i] != L'&') continue;
        if (caption[i + 1] != L'&') return caption[i + 1];
        ++i;
    }
    return 0;
}

std::wstring withoutMnemonic(const std::wstring& caption) {
    std::wstring plain;
    for (std::size_t i = 0; i < caption.size(); ++i) {
        if (caption[i] == L'&' && i + 1 < caption.size()) ++i;
        plain += caption[i];
    }
    return plain;
}

std::wstring withMnemonic(const std::wstring& caption, wchar_t key) {
    bool marked = key == 0;
    std::wstring result;
    for (const wchar_t letter : caption) {
        const bool here = !marked && upper(letter) == upper(key);
        if (here || letter == L'&') result += L'&';
        marked = marked || here;
        result += letter;
    }
    return result;
}

std::size_t utf16Position(const std::wstring& text, std::size_t character) {
    std::size_t position = 0;
    for (std::size_t i = 0; i < character && position < text.size(); ++i)
        position += startsPair(text, position) ? 2 : 1;
    return position;
}

} // namespace toolkit::win32
