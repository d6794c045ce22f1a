#pragma once

#include <functional>
#include <string>

namespace Module1 {

/// Runs a console program, answers its question with "y" and returns what it wrote to its standard output
/// until it ended; empty when it could not be started, which the user has been told by then. Window events
/// are handled meanwhile. As soon as `goesOn` (when there is one) says no, the program is ended, and the
/// result is empty: what it wrote so far tells nothing of what it did. One that has ended by itself by then
/// counts as any other. Throws toolkit::Unwind when the main window is closed meanwhile; the program is ended
/// then, too.
std::string runConsoleProgram(const std::string& commandLine, const std::function<bool()>& goesOn = {});

} // namespace Module1
