#pragma once

#include <string>

namespace platform::windows {

/// The user's configuration folder for the program, whether or not it exists; empty when the user has none.
std::string userConfigFolder();

} // namespace platform::windows
