// Replies are JSON; values are passed around as they stand in the text.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace probe::json {

using Members = std::vector<std::pair<std::string_view, std::string>>;

std::string quoted(std::wstring_view text);
std::string quoted(std::string_view utf8);
std::string number(long long value);
std::string boolean(bool value);
std::string array(const std::vector<std::string>& values);
std::string object(const Members& members);

constexpr std::string_view null = "null";

} // namespace probe::json
