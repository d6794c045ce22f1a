#include "base/text.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace base {

namespace {

/// Characters of the bytes 128 to 159; all other bytes are the character of their own number.
constexpr std::array<char32_t, 32> upperControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

constexpr char32_t noCharacter = 0xFFFD;

void appendUtf8(std::string& text, char32_t c) {
    const auto byte = [&text](char32_t value) {
        text += static_cast<char>(static_cast<unsigned char>(value));
    };
    if (c < 0x80) {
        byte(c);
    } else if (c < 0x800) {
        byte(0xC0 | (c >> 6));
        byte(0x80 | (c & 0x3F));
    } else {
        byte(0xE0 | (c >> 12));
        byte(0x80 | ((c >> 6) & 0x3F));
        byte(0x80 | (c & 0x3F));
    }
}

char32_t decode(std::string_view character) {
    const auto first = static_cast<unsigned char>(character[0]);
    if (character.size() == 1) return first < 0x80 ? first : noCharacter;
    char32_t value = first & (0x7Fu >> character.size());
    for (const char c : character.substr(1))
        value = (value << 6) | (static_cast<unsigned char>(c) & 0x3Fu);
    return value;
}

/// The shortest form is the only one: a longer one could smuggle in a NUL or a separator.
bool isShortest(std::string_view character) {
    constexpr std::array<char32_t, 5> least = {0, 0, 0x80, 0x800, 0x10000};
    return decode(character) >= least.at(character.size());
}

/// Length of the character that begins a text which is not empty; 1 when its first byte begins none.
std::size_t characterLength(std::string_view text) {
    const auto first = static_cast<unsigned char>(text[0]);
    const std::size_t length = first < 0xC2 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF5 ? 4 : 1;
    if (length > text.size()) return 1;
    const auto continues = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; };
    const std::string_view character = text.substr(0, length);
    const bool whole = std::all_of(character.begin() + 1, character.end(), continues);
    return whole && isShortest(character) ? length : 1;
}

char ansiByte(char32_t c) {
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF)) return static_cast<char>(static_cast<unsigned char>(c));
    const auto found = std::find(upperControls.begin(), upperControls.end(), c);
    if (found == upperControls.end()) return '?';
    return static_cast<char>(static_cast<unsigned char>(0x80 + (found - upperControls.begin())));
}

} // namespace

std::string fromAnsi(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        appendUtf8(text, byte >= 0x80 && byte < 0xA0 ? upperControls[byte - 0x80U] : char32_t{byte});
    }
    return text;
}

std::string toAnsi(std::string_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        bytes += ansiByte(decode(text.substr(0, length)));
        text.remove_prefix(length);
    }
    return bytes;
}

std::size_t characterCount(std::string_view text) {
    std::size_t count = 0;
    for (; !text.empty(); text.remove_prefix(characterLength(text)))
        ++count;
    return count;
}

std::string_view firstCharacters(std::string_view text, std::size_t count) {
    std::string_view rest = text;
    for (; count > 0 && !rest.empty(); --count)
        rest.remove_prefix(characterLength(rest));
    return text.substr(0, text.size() - rest.size());
}

} // namespace base
