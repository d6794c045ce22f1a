#pragma once

#include "toolkit/message_style.h"

#include <string_view>

namespace toolkit {

/// Shows a text (lines separated by CR LF; shown_text.h tells how much of it) in a modal box and returns the
/// button pressed. Closing the box is Cancel where there is such a button, No where there is that, else Ok.
/// An empty title stands for the program's name. Throws Unwind when the program ends while the box is open.
int messageBox(std::string_view text, int style, std::string_view title = {});

} // namespace toolkit
