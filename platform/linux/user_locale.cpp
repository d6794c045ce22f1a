#include "platform/user_locale.h"

#include <clocale>
#include <langinfo.h>

namespace platform {

std::string decimalSeparator() {
    // A locale of its own: the process's own one must stay what the libraries set.
    const locale_t user = newlocale(LC_NUMERIC_MASK, "", nullptr);
    if (user == nullptr) return "."; // the locale that the user names is not installed
    std::string separator = nl_langinfo_l(RADIXCHAR, user);
    freelocale(user);
    return separator.empty() ? "." : separator;
}

} // namespace platform
