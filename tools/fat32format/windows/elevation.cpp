#include "tools/fat32format/windows/elevation.h"

#include "platform/windows/com_apartment.h"

#include <shellapi.h>

namespace fat32format {

using platform::windows::ComApartment;
using platform::windows::UniqueHandle;

bool isElevated() {
    HANDLE token = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == FALSE) return false;
    const UniqueHandle owned(token);
    TOKEN_ELEVATION elevation{};
    DWORD size = 0;
    return GetTokenInformation(token, TokenElevation, &elevation, sizeof elevation, &size) != FALSE &&
           elevation.TokenIsElevated != 0;
}

std::wstring imageOf(HANDLE process, DWORD form) {
    constexpr DWORD longestPath = 32'768; // characters
    std::wstring path(longestPath, L'\0');
    DWORD size = longestPath;
    if (QueryFullProcessImageNameW(process, form, path.data(), &size) == FALSE) size = 0;
    path.resize(size);
    return path;
}

Started startElevated(const std::wstring& parameters) {
    const std::wstring program = imageOf(GetCurrentProcess(), 0);
    if (program.empty()) return {{}, GetLastError()};
    const ComApartment apartment;
    SHELLEXECUTEINFOW wish{};
    wish.cbSize = sizeof wish;
    wish.fMask = SEE_MASK_NOCLOSEPROCESS | SEE_MASK_NOASYNC | SEE_MASK_FLAG_NO_UI;
    wish.hwnd = GetConsoleWindow(); // or the question comes up behind other windows
    wish.lpVerb = L"runas";
    wish.lpFile = program.c_str();
    wish.lpParameters = parameters.c_str();
    wish.nShow = SW_HIDE;
    if (ShellExecuteExW(&wish) == FALSE) return {{}, GetLastError()};
    return {UniqueHandle(wish.hProcess), 0};
}

} // namespace fat32format
