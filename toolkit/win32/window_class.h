#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace toolkit::win32 {

/// Registers the class of a form's window, which bears the form's name and behaves as a dialog.
/// https://learn.microsoft.com/windows/win32/dlgbox/using-dialog-boxes
void registerWindowClass(const std::wstring& name);

/// Is the window of that class? Null is of none. Case does not count.
bool isOfClass(HWND window, std::wstring_view nativeClass);

/// Ends the program: the resources do not fit to the form.
[[noreturn]] void defectiveLayout(const std::string& window, const std::string& part);

} // namespace toolkit::win32
