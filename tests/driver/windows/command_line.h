// Programs that are started by a whole command line, as the list of installed programs does.
#pragma once

#include <string>

namespace probe {

/// Waits for the program and tells its exit code and whether it had an administrator's rights; JSON. As a
/// plain user it has a token in which the group of the administrators allows nothing.
std::string runCommandLine(std::wstring commandLine, bool asPlainUser);

/// The same without waiting, and so without an exit code.
std::string startCommandLine(std::wstring commandLine, bool asPlainUser);

} // namespace probe
