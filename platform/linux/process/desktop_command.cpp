#include "platform/linux/process/desktop_command.h"

#include "platform/blocking.h"
#include "platform/linux/base/unique_fd.h"
#include "platform/linux/process/spawn.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <memory>
#include <poll.h>
#include <unistd.h>

namespace platform::linux {

namespace {

using Clock = std::chrono::steady_clock;

/// Reads until the other end closes; false when it has not at the deadline.
bool readUntilClosed(int descriptor, Clock::time_point deadline, std::string& text) {
    std::array<char, 4096> piece = {};
    const auto own = std::make_shared<UniqueFd>(fcntl(descriptor, F_DUPFD_CLOEXEC, 0));
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        const int longest = static_cast<int>(std::clamp<decltype(left)>(left, 0, 60000));
        const int ready = blocking([own, longest] {
            pollfd waiting = {own->get(), POLLIN, 0};
            return poll(&waiting, 1, longest);
        });
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
    const SpawnPlan plan(command, POSIX_SPAWN_SETSID, SpawnPlan::noFile, SpawnPlan::noFile);
    const pid_t between = fork();
    if (between == 0) _exit(plan.start() < 0 ? 1 : 0);
    return between > 0 && reap(between) == 0;
}

std::optional<std::string> outputOf(const std::vector<std::string>& command, Clock::time_point deadline) {
    auto pipe = createPipe();
    if (!pipe) return std::nullopt;
    const SpawnPlan plan(command, POSIX_SPAWN_SETPGROUP, SpawnPlan::noFile, pipe->write.get());
    const pid_t process = plan.start();
    pipe->write.close();
    if (process < 0) return std::nullopt;
    std::string text;
    const bool complete = readUntilClosed(pipe->read.get(), deadline, text);
    kill(-process, SIGKILL); // with whatever it started; nothing when all have ended
    reap(process);
    return complete ? std::optional(text) : std::nullopt;
}

} // namespace platform::linux
