// Two small input helpers of the main window; no present screen uses them.
#pragma once

#include "toolkit/form.h"

#include <cstdint>
#include <string>

namespace app {

/// The character code when it is a digit or backspace, else 0: the key is swallowed.
std::int16_t digitsOnly(std::int16_t keyCode);

/// A number of minutes as the user reads it: "45 min", "1h und 01 min". Without a number (0) the user is told
/// that 20 minutes are taken, and the result is "20".
std::string intervalText(const toolkit::Form& window, std::int32_t minutes);

} // namespace app
