#include "platform/linux/process/desktop_command.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace platform::linux {

namespace {

using Clock = std::chrono::steady_clock;

/// How a command starts: its first three files, and no signal set up in this program's way.
class SpawnPlan {
public:
    SpawnPlan(short flags, int output) {
        posix_spawn_file_actions_init(&files_);
        posix_spawn_file_actions_addopen(&files_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        if (output >= 0)
            posix_spawn_file_actions_adddup2(&files_, output, STDOUT_FILENO);
        else
            posix_spawn_file_actions_addopen(&files_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&files_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addclosefrom_np(&files_, STDERR_FILENO + 1);

        sigset_t none = {};
        sigset_t all = {};
        sigemptyset(&none);
        sigfillset(&all);
        posix_spawnattr_init(&attributes_);
        posix_spawnattr_setsigmask(&attributes_, &none);
        posix_spawnattr_setsigdefault(&attributes_, &all);
        posix_spawnattr_setflags(&attributes_,
                                 static_cast<short>(flags | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF));
    }
    SpawnPlan(const SpawnPlan&) = delete;
    SpawnPlan& operator=(const SpawnPlan&) = delete;
    ~SpawnPlan() {
        posix_spawnattr_destroy(&attributes_);
        posix_spawn_file_actions_destroy(&files_);
    }

    /// Process id, or -1.
    pid_t start(const std::vector<char*>& arguments) const {
        pid_t process = -1;
        const int failure =
            posix_spawnp(&process, arguments.front(), &files_, &attributes_, arguments.data(), environ);
        return failure == 0 ? process : -1;
    }

private:
    posix_spawn_file_actions_t files_ = {};
    posix_spawnattr_t attributes_ = {};
};

/// The arguments as the system wants them; they live as long as `command`.
std::vector<char*> argumentVector(const std::vector<std::string>& command) {
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str())); // the system does not write to it
    arguments.push_back(nullptr);
    return arguments;
}

/// Waits for a process; its exit status, or -1 when it had none.
int reap(pid_t process) {
    int status = 0;
    while (waitpid(process, &status, 0) < 0)
        if (errno != EINTR) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// Reads until the other end closes; false when it has not at the deadline.
bool readUntilClosed(int descriptor, Clock::time_point deadline, std::string& text) {
    std::array<char, 4096> piece = {};
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        pollfd waiting = {descriptor, POLLIN, 0};
        const int ready = poll(&waiting, 1, static_cast<int>(std::clamp<decltype(left)>(left, 0, 60000)));
        if (ready == 0) return false;
        const ssize_t count = ready < 0 ? -1 : read(descriptor, piece.data(), piece.size());
        if (count == 0) return true;
        if (count > 0)
            text.append(piece.data(), static_cast<std::size_t>(count));
        else if (errno != EINTR)
            return false;
    }
}

} // namespace

// The process between this program and the command ends at once and hands the command over to the system,
// which reaps it. Its memory is a copy of a program with threads, so it does nothing but start the command
// and end.
bool startDetached(const std::vector<std::string>& command) {
    const std::vector<char*> arguments = argumentVector(command);
    const SpawnPlan plan(POSIX_SPAWN_SETSID, -1);
    const pid_t between = fork();
    if (between == 0) _exit(plan.start(arguments) < 0 ? 1 : 0);
    return between > 0 && reap(between) == 0;
}

std::optional<std::string> outputOf(const std::vector<std::string>& command, Clock::time_point deadline) {
    std::array<int, 2> ends = {};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return std::nullopt;
    const pid_t process = SpawnPlan(POSIX_SPAWN_SETPGROUP, ends[1]).start(argumentVector(command));
    close(ends[1]);
    std::string text;
    bool complete = false;
    if (process > 0) {
        complete = readUntilClosed(ends[0], deadline, text);
        kill(-process, SIGKILL); // with whatever it started; nothing when all have ended
        reap(process);
    }
    close(ends[0]);
    return complete ? std::optional(text) : std::nullopt;
}

} // namespace platform::linux
