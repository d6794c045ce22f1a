#include "platform/user_locale.h"

#include "platform/windows/ansi_text.h"

#include <windows.h>

#include <array>

namespace platform {

std::string decimalSeparator() {
    std::array<char, 16> separator{};
    const int length = GetLocaleInfoA(LOCALE_USER_DEFAULT, LOCALE_SDECIMAL, separator.data(),
                                      static_cast<int>(separator.size()));
    return length > 1 ? windows::utf8FromAnsi(separator.data()) : ".";
}

} // namespace platform
