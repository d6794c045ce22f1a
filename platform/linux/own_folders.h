#pragma once

#include <string>

namespace platform::posix {

/// The user's configuration folder for the program, whether or not it exists; empty when the user has no
/// home.
std::string userConfigFolder();

} // namespace platform::posix
