#include "tools/fat32format/linux_system.h"

#include "platform/linux/unique_fd.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fat32format {

namespace {

using platform::posix::UniqueFd;

constexpr int lookInterval = 200; // ms

struct Pipe {
    UniqueFd read;
    UniqueFd write;
};

Pipe makePipe() {
    std::array<int, 2> ends = {-1, -1};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return {};
    return {UniqueFd(ends[0]), UniqueFd(ends[1])};
}

/// Process id, or -1. What the program has to say, it says to one place.
pid_t start(const std::vector<std::string>& command, int input, int output) {
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str())); // the system does not write to it
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t files = {};
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_adddup2(&files, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&files, output, STDERR_FILENO);
    pid_t process = -1;
    const int failure = posix_spawn(&process, arguments.front(), &files, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&files);
    return failure == 0 ? process : -1;
}

std::string readAll(int descriptor, const std::function<void()>& meanwhile) {
    std::string text;
    std::array<char, 4096> piece = {};
    for (;;) {
        pollfd waiting = {descriptor, POLLIN, 0};
        const int ready = poll(&waiting, 1, lookInterval);
        meanwhile();
        if (ready == 0 || (ready < 0 && errno == EINTR)) continue;
        const ssize_t count = read(descriptor, piece.data(), piece.size());
        if (count <= 0) return text;
        text.append(piece.data(), static_cast<std::size_t>(count));
    }
}

int statusOf(pid_t process) {
    int status = 0;
    while (waitpid(process, &status, 0) < 0)
        if (errno != EINTR) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace

CommandResult LinuxSystem::run(const std::vector<std::string>& command, const std::string& input,
                               const std::function<void()>& meanwhile) {
    Pipe to = makePipe();
    Pipe from = makePipe();
    if (!to.write || !from.write) return {};
    const pid_t process = start(command, to.read.get(), from.write.get());
    from.write.close();
    if (process < 0) return {};
    // A few lines, which the pipe takes at once; its read end is still open here, so that nobody meets a
    // broken one.
    [[maybe_unused]] const ssize_t written = write(to.write.get(), input.data(), input.size());
    to.write.close();
    CommandResult result;
    result.output = readAll(from.read.get(), meanwhile);
    result.status = statusOf(process);
    return result;
}

} // namespace fat32format
