#include "platform/linux/files/file_name.h"

#include <algorithm>
#include <array>
#include <clocale>
#include <cwctype>

namespace platform::linux {

namespace {

/// What is added to a byte that begins no character, so that it matches nothing but itself.
constexpr char32_t strayByte = 0x110000;

/// Takes one character off a text that is not empty.
char32_t takeCharacter(std::string_view& text) {
    const auto first = static_cast<unsigned char>(text[0]);
    const auto stray = [&text, first] {
        text.remove_prefix(1);
        return strayByte + first;
    };
    const std::size_t length = first < 0x80   ? 1
                               : first < 0xC2 ? 0
                               : first < 0xE0 ? 2
                               : first < 0xF0 ? 3
                               : first < 0xF5 ? 4
                                              : 0;
    if (length == 0 || length > text.size()) return stray();
    char32_t c = length == 1 ? first : first & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xC0) != 0x80) return stray();
        c = (c << 6) | (next & 0x3FU);
    }
    constexpr std::array<char32_t, 5> smallest = {0, 0, 0x80, 0x800, 0x10000};
    if (c < smallest[length] || c > 0x10FFFF || (c >= 0xD800 && c < 0xE000)) return stray();
    text.remove_prefix(length);
    return c;
}

/// Capital letters of all scripts whatever the user's locale; where the C library lacks that locale, those of
/// Latin-1.
char32_t upperCase(char32_t c) {
    static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    if (c < 0x80) return c >= 'a' && c <= 'z' ? c - ('a' - 'A') : c;
    if (c >= strayByte) return c;
    if (unicode == nullptr) return c >= 0xE0 && c <= 0xFE && c != 0xF7 ? c - 0x20 : c;
    const auto upper = static_cast<char32_t>(towupper_l(static_cast<wint_t>(c), unicode));
    // The long s and the dotless i have ASCII capitals, but are letters of their own in file names.
    return upper < 0x80 ? c : upper;
}

bool forbidden(char32_t c) {
    return c < 0x20 || c == 0x7F || c >= strayByte ||
           std::u32string_view(U"<>:\"/\\|?*").find(c) != std::u32string_view::npos;
}

std::string_view withoutTrailing(std::string_view text, std::string_view characters) {
    return text.substr(0, text.find_last_not_of(characters) + 1);
}

/// `NUL` and its like stand for devices whatever the extension.
/// https://learn.microsoft.com/windows/win32/fileio/naming-a-file#naming-conventions
bool isDevice(std::string_view name) {
    constexpr std::string_view firstLetters = "CPANLcpanl"; // most names are done with here
    if (firstLetters.find(name[0]) == std::string_view::npos) return false;
    static constexpr std::array<std::string_view, 6> devices = {"CON", "PRN",    "AUX",
                                                                "NUL", "CONIN$", "CONOUT$"};
    static constexpr std::array<std::string_view, 12> numbers = {"1", "2", "3", "4", "5", "6",
                                                                 "7", "8", "9", "¹", "²", "³"};
    const std::string_view stem = withoutTrailing(name.substr(0, name.find('.')), " ");
    const auto isStem = [stem](std::string_view device) { return sameName(stem, device); };
    if (std::any_of(devices.begin(), devices.end(), isStem)) return true;
    if (!sameName(stem.substr(0, 3), "COM") && !sameName(stem.substr(0, 3), "LPT")) return false;
    return std::find(numbers.begin(), numbers.end(), stem.substr(3)) != numbers.end();
}

} // namespace

std::optional<std::string_view> usableName(std::string_view name) {
    const std::string_view usable = withoutTrailing(name, ". ");
    if (usable.empty() || isDevice(usable)) return std::nullopt;
    for (std::string_view rest = name; !rest.empty();) {
        if (forbidden(takeCharacter(rest))) return std::nullopt;
    }
    return usable;
}

bool sameName(std::string_view a, std::string_view b) {
    while (!a.empty() && !b.empty()) {
        if (upperCase(takeCharacter(a)) != upperCase(takeCharacter(b))) return false;
    }
    return a.empty() && b.empty();
}

} // namespace platform::linux
