#include "online/file_name.h"

#include "base/letters.h"

#include <algorithm>
#include <array>
#include <string>

namespace online {

namespace {

constexpr std::array<std::string_view, 3> filesOfTheProgram = {"usb.ini", "autorun.inf", "orvantastick.ico"};

/// Dots and blanks at the end of a name do not count.
std::string_view withoutTail(std::string_view name) {
    return name.substr(0, name.find_last_not_of(". ") + 1);
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// The icon's name is too long for DOS, so it has a second one: "ORVANT~1.ICO", or, where many begin so, two
/// of its letters and a checksum. The other two files have none but their own.
bool isShortNameOfIcon(std::string_view name) {
    constexpr std::string_view extension = ".ico";
    constexpr std::size_t longest = 8;
    if (!name.starts_with("or") || !name.ends_with(extension)) return false;
    name.remove_suffix(extension.size());
    const std::size_t tilde = name.rfind('~');
    if (name.size() > longest || tilde == std::string_view::npos) return false;
    const std::string_view number = name.substr(tilde + 1);
    return !number.empty() && std::all_of(number.begin(), number.end(), isDigit);
}

} // namespace

bool isFileNameForStick(std::string_view name) {
    if (name.find_first_of("\\/:") != std::string_view::npos) return false;
    const std::string counted = base::lower(withoutTail(name));
    if (counted.empty() || isShortNameOfIcon(counted)) return false;
    return std::find(filesOfTheProgram.begin(), filesOfTheProgram.end(), counted) == filesOfTheProgram.end();
}

} // namespace online
