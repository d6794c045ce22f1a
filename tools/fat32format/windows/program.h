#pragma once

#include "tools/fat32format/command_line.h"
#include "tools/fat32format/formatter.h"
#include "tools/fat32format/windows/first_process.h"

#include <functional>
#include <span>
#include <string>

namespace fat32format {

/// What a run needs besides its command line.
struct Surroundings {
    std::function<bool()> isElevated;
    Start start; ///< with more rights
    std::function<Status(Dialogue&, const Options&)> format;
};

/// All of the program; the arguments are those without its name. Returns the exit status. It takes the
/// standard files of the process, see ConsoleDialogue, and loads libraries from the system's folder alone. A
/// process that was started for its rights ("--pipe=NUMBER") speaks through the pipe alone, and starts no
/// other one.
int run(std::span<const std::string> arguments, const Surroundings& surroundings);

} // namespace fat32format
