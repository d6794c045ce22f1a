#pragma once

#include <string>

namespace platform {

/// Folder of the running program, in the platform's own form, without a separator at the end unless it is a
/// root. Windows: `GetModuleFileName`.
std::string programFolder();

/// Folder for the program's settings: the program folder when the user may write there and the build is
/// portable, else the user's own configuration folder for the program, which is created. For a user without
/// one a portable build has the program folder, any other a folder that is not there. Same form as
/// programFolder().
std::string settingsFolder();

} // namespace platform
