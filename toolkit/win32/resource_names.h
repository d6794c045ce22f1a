// Where the resources know a control by the name that it has in the core.
#pragma once

#include <string_view>

namespace toolkit::win32 {

/// The number of that name in the dialog templates, the menu and the string table; 0 when there is none.
int resourceNumber(std::string_view name);

} // namespace toolkit::win32
