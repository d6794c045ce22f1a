// The terminal that the program was started from.
#pragma once

#include <string_view>

namespace platform {

/// Writes a text, whose lines end in a line feed, to the standard output. On Windows, where a program with
/// windows has none unless it was redirected, it goes to the console that the program was started from:
/// `AttachConsole`, https://learn.microsoft.com/windows/console/attachconsole
void print(std::string_view text);

} // namespace platform
