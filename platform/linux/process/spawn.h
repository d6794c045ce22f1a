// Starting a program, and the pipe that it writes to or reads from.
#pragma once

#include "platform/linux/base/unique_fd.h"

#include <optional>
#include <spawn.h>
#include <string>
#include <sys/types.h>
#include <vector>

namespace platform::linux {

struct PipeEnds {
    UniqueFd read;
    UniqueFd write;
};

/// Closed in every program that is started, and never one of the numbers of the standard files.
std::optional<PipeEnds> createPipe();

/// A command with its standard files and no signal set up in this program's way.
class SpawnPlan {
public:
    static constexpr int noFile = -1; ///< /dev/null

    /// A name without a slash is looked for in PATH. `flags` are further ones of posix_spawnattr_setflags():
    /// https://man7.org/linux/man-pages/man3/posix_spawn.3.html
    SpawnPlan(std::vector<std::string> command, short flags, int input, int output);
    SpawnPlan(const SpawnPlan&) = delete;
    SpawnPlan& operator=(const SpawnPlan&) = delete;
    ~SpawnPlan();

    /// Process id, or -1. Does nothing that a copy of a program with threads may not do.
    pid_t start() const;

private:
    std::vector<std::string> command_;
    std::vector<char*> arguments_;
    posix_spawn_file_actions_t files_ = {};
    posix_spawnattr_t attributes_ = {};
};

/// Waits for a process; its exit status, or -1 when it had none.
int reap(pid_t process);

} // namespace platform::linux
