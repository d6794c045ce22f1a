#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace base {

/// Stands between the lines of a message.
constexpr std::string_view CRLF = "\r\n";

/// The lines of a message, joined; an empty one makes a blank line.
std::string joinLines(std::initializer_list<std::string_view> lines);

} // namespace base
