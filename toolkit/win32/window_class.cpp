#include "toolkit/win32/window_class.h"

#include "toolkit/picture.h"
#include "toolkit/win32/texts.h"

#include <array>
#include <cstdlib>

namespace toolkit::win32 {

namespace {

HICON icon(int width, int height) {
    return static_cast<HICON>(LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(programIcon), IMAGE_ICON,
                                         GetSystemMetrics(width), GetSystemMetrics(height), LR_SHARED));
}

} // namespace

void registerWindowClass(const std::wstring& name) {
    WNDCLASSEXW description{};
    description.cbSize = sizeof description;
    if (GetClassInfoExW(GetModuleHandleW(nullptr), name.c_str(), &description) != FALSE) return;
    description = {};
    description.cbSize = sizeof description;
    description.style = CS_DBLCLKS;
    description.lpfnWndProc = DefDlgProcW;
    description.cbWndExtra = DLGWINDOWEXTRA;
    description.hInstance = GetModuleHandleW(nullptr);
    description.hIcon = icon(SM_CXICON, SM_CYICON);
    description.hIconSm = icon(SM_CXSMICON, SM_CYSMICON);
    description.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    description.lpszClassName = name.c_str();
    RegisterClassExW(&description);
}

bool isOfClass(HWND window, std::wstring_view nativeClass) {
    if (window == nullptr) return false;
    std::array<wchar_t, 64> name{};
    const int length = GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    return CompareStringOrdinal(name.data(), length, nativeClass.data(), static_cast<int>(nativeClass.size()),
                                TRUE) == CSTR_EQUAL;
}

void defectiveLayout(const std::string& window, const std::string& part) {
    const std::wstring text =
        L"The resources have nothing that can show " + fromUtf8(window) + L" " + fromUtf8(part) + L".";
    FatalAppExitW(0, text.c_str());
    std::abort();
}

} // namespace toolkit::win32
