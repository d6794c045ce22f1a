// What a person finds in the windows, as JSON.
#pragma once

#include "tests/driver/windows/target.h"

#include <string>

namespace probe {

std::string describeWindows();
std::string describe(const Part& part);

/// The open message box with title, text, icon number and buttons; null when there is none.
std::string describeMessageBox();
/// Its button of that caption. Throws Failure.
HWND messageBoxButton(const std::wstring& caption);

/// Where a part is on the screen.
RECT screenRectangle(const Part& part);

} // namespace probe
