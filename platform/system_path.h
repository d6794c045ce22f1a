#pragma once

#include <string>
#include <string_view>

namespace platform {

/// A path of the program's (files.h) as the system writes it, for people to read: with the system's own
/// separators, and with the folder that a drive is where the system has no letters. A drive that has no
/// folder at the moment keeps its letter; what is no path, and what follows one, stays as it is but for its
/// separators. Windows: the path itself.
std::string systemPath(std::string_view path);

} // namespace platform
