#include "base/letters.h"

#include <algorithm>

namespace base {

std::string lower(std::string_view text) {
    std::string result(text);
    for (char& c : result)
        c = lower(c);
    return result;
}

std::string upper(std::string_view text) {
    std::string result(text);
    for (char& c : result)
        c = upper(c);
    return result;
}

bool sameNoCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lower(x) == lower(y); });
}

bool startsWithNoCase(std::string_view text, std::string_view prefix) {
    return sameNoCase(text.substr(0, prefix.size()), prefix);
}

} // namespace base
