#include "platform/process.h"

#include "platform/linux/base/unique_fd.h"
#include "platform/linux/process/command_line.h"
#include "platform/linux/process/spawn.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <poll.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace platform {

namespace {

using linux::createPipe;
using linux::PipeEnds;
using linux::reap;
using linux::SpawnPlan;
using linux::UniqueFd;
using namespace std::chrono_literals;

/// What a program gets to end in good order before it is killed.
constexpr auto graceTime = 2000ms;

/// Becomes readable when the process ends; none where the system cannot tell.
UniqueFd endOf(pid_t process) {
    // glibc's header does not declare its own function for C++.
    return UniqueFd(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
}

/// Waits until one of the two can be read, which may be none; false when that does not happen in time.
bool waitForEither(int first, int second, std::chrono::milliseconds time) {
    const auto deadline = std::chrono::steady_clock::now() + time;
    for (;;) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left <= 0ms) return false;
        std::array<pollfd, 2> files = {pollfd{first, POLLIN, 0}, pollfd{second, POLLIN, 0}};
        const int ready = poll(files.data(), files.size(), static_cast<int>(left.count()));
        if (ready >= 0 || errno != EINTR) return ready > 0;
    }
}

/// For one that a device does not let go, which no signal changes: nobody waits for that.
void reapLater(pid_t process) {
    try {
        std::thread(reap, process).detach();
    } catch (const std::system_error&) {
        // There are no more threads: what is left of the process goes with this program.
    }
}

} // namespace

struct Pipe::State {
    UniqueFd write; // members go in the order opposite to this one
    UniqueFd read;
};

Pipe::Pipe() {
    auto ends = createPipe();
    if (ends) state_ = std::make_unique<State>(State{std::move(ends->write), std::move(ends->read)});
}

Pipe::~Pipe() = default;

bool Pipe::peek(std::uint32_t& available) const {
    available = 0;
    int count = 0;
    if (!state_ || ioctl(state_->read.get(), FIONREAD, &count) != 0) return false;
    available = static_cast<std::uint32_t>(count);
    return true;
}

bool Pipe::read(std::span<char> buffer, std::uint32_t& count) {
    count = 0;
    if (!state_) return false;
    ssize_t result = -1;
    do {
        result = ::read(state_->read.get(), buffer.data(), buffer.size());
    } while (result < 0 && errno == EINTR);
    if (result < 0) return false;
    count = static_cast<std::uint32_t>(result);
    return true;
}

struct Process::State {
    State(pid_t child, PipeEnds pipe, int readEnd)
        : id(child), output(readEnd), end(endOf(child)), input(std::move(pipe)) {}
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    ~State() {
        if (reaped) return;
        kill(-id, SIGTERM);
        bool ends = endsSoon();
        if (!ends) {
            kill(-id, SIGKILL);
            ends = endsSoon();
        }
        if (ends)
            reap(id);
        else
            reapLater(id);
    }

    bool endsSoon() const { return end && waitForEither(end.get(), -1, graceTime); }

    pid_t id;
    bool reaped = false;
    int output; ///< what it writes can be read there
    UniqueFd end;
    /// Its read end stays open here, so that no answer meets a broken pipe, and no SIGPIPE comes.
    PipeEnds input;
};

Process::Process(std::string_view commandLine, Pipe& output) {
    const auto command = linux::parseCommandLine(commandLine);
    auto input = createPipe();
    if (!command || !input || !output.created()) return;
    // A process group of its own, so that it can be ended with all it started.
    const pid_t id =
        SpawnPlan(*command, POSIX_SPAWN_SETPGROUP, input->read.get(), output.state_->write.get()).start();
    if (id > 0) state_ = std::make_unique<State>(id, std::move(*input), output.state_->read.get());
}

Process::~Process() = default;

/// A typed line ends with a line end, and the end of the input follows it, so that a second question is not
/// waited for.
void Process::answer(std::string_view text) {
    if (!state_ || !state_->input.write) return;
    const std::string line = std::string(text) + '\n';
    // A pipe that nobody has written to yet takes a line at once.
    [[maybe_unused]] const ssize_t written = write(state_->input.write.get(), line.data(), line.size());
    state_->input.write.close();
}

void Process::wait(std::chrono::milliseconds longest) {
    if (state_ && !state_->reaped) waitForEither(state_->end.get(), state_->output, longest);
}

bool Process::ended() {
    if (!state_ || state_->reaped) return true;
    const pid_t result = waitpid(state_->id, nullptr, WNOHANG);
    state_->reaped = result == state_->id || (result < 0 && errno == ECHILD);
    return state_->reaped;
}

} // namespace platform
