// Command lines: the one text that Windows hands to a program, and the arguments that this system wants.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform::linux {

/// The native path of the program that a command line begins with, then its arguments. No value when it
/// begins with no existing file.
///
/// A program path without quotes may hold blanks, so each blank behind its last backslash may be its end. The
/// longest piece that is a file is the program. A blank in front of that backslash is none: else a file
/// "/opt/my" would run in the place of a missing "/opt/my folder\tool.exe".
std::optional<std::vector<std::string>> parseCommandLine(std::string_view commandLine);

} // namespace platform::linux
