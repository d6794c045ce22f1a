// The process that the user has started: it shows, asks and answers for one that may do more.
#pragma once

#include "tools/fat32format/command_line.h"
#include "tools/fat32format/windows/dialogue.h"
#include "tools/fat32format/windows/elevation.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace fat32format {

/// Starts this program with more rights and the parameters.
using Start = std::function<Started(const std::wstring& parameters)>;

/// Parameters of the second process, made of the options alone: "-c64 E: --pipe=NUMBER".
std::wstring parametersFor(const Options& options, std::uint64_t pipe);

/// Name of the pipe between the two.
std::wstring pipeName(std::uint64_t number);

/// Makes a pipe that only this user and administrators may open, starts the second process, and speaks for it
/// until it ends. Its exit status; Status::NotAuthorised when the user refuses the rights; Status::Failed,
/// and a sentence that says so, when it does not come to the pipe within `patience`, another process comes,
/// or it breaks off or says what it must not. When this process ends before the first write, the second
/// one changes nothing; after that it goes on to its end.
int formatElevated(const Options& options, Dialogue& dialogue, const Start& start,
                   std::chrono::milliseconds patience = std::chrono::minutes(1));

} // namespace fat32format
