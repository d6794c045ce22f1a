// What the program is told on its command line: next to nothing.
#pragma once

#include <optional>
#include <span>
#include <string>

namespace app {

/// What the program prints in the place of opening its window when its first argument is "--version" or
/// "--help"; no value for anything else, which means nothing. `arguments` begins with the program's name.
std::optional<std::string> answerTo(std::span<const char* const> arguments);

} // namespace app
