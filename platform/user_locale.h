#pragma once

#include <string>

namespace platform {

/// The user's decimal separator, "," or "." as a rule. Windows: `GetLocaleInfo`, LOCALE_SDECIMAL.
std::string decimalSeparator();

} // namespace platform
