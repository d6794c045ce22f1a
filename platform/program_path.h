#pragma once

#include <string>
#include <string_view>

namespace platform {

/// The folder with "\" appended when it does not already end in one.
std::string withBackslash(std::string folder);

/// The program folder, ending in "\".
std::string programPath();

} // namespace platform
