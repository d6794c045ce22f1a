#pragma once

#include "toolkit/qt/form_window.h"

#include <string_view>

namespace toolkit::qt {

/// Fills the window with the layout of that name; false when there is none.
bool setUpLayout(std::string_view name, FormWindow& window);

} // namespace toolkit::qt
