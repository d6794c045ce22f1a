// Running the desktop's own commands: started by their name on PATH, arguments passed one by one, never
// through a shell; with no open file of this program but their output.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace platform::linux {

/// Starts a command that goes on by itself, in a session of its own; it leaves no zombie. False when it could
/// not be started.
bool startDetached(const std::vector<std::string>& command);

/// What a command writes to its standard output before it ends. No value when it could not be started or has
/// not ended at the deadline; in that case it is killed.
std::optional<std::string> outputOf(const std::vector<std::string>& command,
                                    std::chrono::steady_clock::time_point deadline);

} // namespace platform::linux
