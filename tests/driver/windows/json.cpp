#include "tests/driver/windows/json.h"

#include "tests/driver/windows/text.h"

#include <array>
#include <cstdio>

namespace probe::json {

std::string quoted(std::wstring_view text) {
    return quoted(utf8(text));
}

std::string quoted(std::string_view utf8) {
    constexpr unsigned char firstPrintable = 0x20;
    std::string result = "\"";
    for (const char c : utf8) {
        if (c == '"' || c == '\\') {
            result += '\\';
            result += c;
        } else if (static_cast<unsigned char>(c) < firstPrintable) {
            std::array<char, 8> escape{};
            std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned>(c));
            result += escape.data();
        } else {
            result += c;
        }
    }
    return result + '"';
}

std::string number(long long value) {
    return std::to_string(value);
}

std::string boolean(bool value) {
    return value ? "true" : "false";
}

std::string array(const std::vector<std::string>& values) {
    std::string result = "[";
    for (const std::string& value : values)
        result += (result.size() > 1 ? "," : "") + value;
    return result + "]";
}

std::string object(const Members& members) {
    std::string result = "{";
    for (const auto& [name, value] : members)
        result += (result.size() > 1 ? "," : "") + quoted(name) + ":" + value;
    return result + "}";
}

} // namespace probe::json
