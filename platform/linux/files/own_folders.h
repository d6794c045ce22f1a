#pragma once

#include <string>

namespace platform::linux {

/// The user's configuration folder for the program, whether or not it exists; empty when the user has no
/// home.
std::string userConfigFolder();

} // namespace platform::linux
