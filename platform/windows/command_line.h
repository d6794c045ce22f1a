// Command lines as CreateProcess takes them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform::windows {

/// The command line, UTF-8, with double quotes around the program that it begins with, in the ANSI code page.
/// No value when no file stands there, or its name has no place in the code page.
///
/// A program path without quotes may hold blanks, so each blank behind its last backslash may be its end. The
/// longest piece that is a file is the program. Without the quotes the system would try each blank, the first
/// one first, and run a file "C:\my.exe" in the place of "C:\my folder\tool.exe",
/// https://learn.microsoft.com/windows/win32/api/processthreadsapi/nf-processthreadsapi-createprocessa#security-remarks
std::optional<std::string> quotedCommandLine(std::string_view commandLine);

} // namespace platform::windows
