#pragma once

#include "platform/files.h"

#include <filesystem>
#include <string>

namespace platform::linux {

/// The user's configuration folder for the program, whether or not it exists; empty when the user has no
/// home.
std::string userConfigFolder();

/// Creates a folder and those above it that are missing, for the user alone.
FileResult createOwnFolder(const std::filesystem::path& folder);

} // namespace platform::linux
