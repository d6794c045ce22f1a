#pragma once

#include <string_view>

namespace platform {

/// Hands a document or a web address to the desktop's shell, which starts the program that goes with it; true
/// when the shell accepted it. `bOpenAsFallback` offers a file that no program goes with to the open-with
/// chooser; the result is false then, too. `parameters` and `directory` are passed on as they are.
bool ShellOpenFile(std::string_view verb, std::string_view file, std::string_view parameters,
                   std::string_view directory, int showCommand, bool bOpenAsFallback);

} // namespace platform
