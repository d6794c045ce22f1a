#include "platform/linux/process/spawn.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace platform::linux {

namespace {

/// The same file under a number above those of the standard files, whichever of them this program has closed.
UniqueFd aboveStandardFiles(UniqueFd fd) {
    if (fd.get() > STDERR_FILENO) return fd;
    return UniqueFd(fcntl(fd.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

void setFile(posix_spawn_file_actions_t& files, int file, int given, int flags) {
    if (given == SpawnPlan::noFile)
        posix_spawn_file_actions_addopen(&files, file, "/dev/null", flags, 0);
    else
        posix_spawn_file_actions_adddup2(&files, given, file);
}

} // namespace

std::optional<PipeEnds> createPipe() {
    std::array<int, 2> ends = {};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return std::nullopt;
    PipeEnds pipe = {UniqueFd(ends[0]), UniqueFd(ends[1])};
    pipe = {aboveStandardFiles(std::move(pipe.read)), aboveStandardFiles(std::move(pipe.write))};
    if (!pipe.read || !pipe.write) return std::nullopt;
    return pipe;
}

SpawnPlan::SpawnPlan(std::vector<std::string> command, short flags, int input, int output)
    : command_(std::move(command)) {
    for (std::string& argument : command_)
        arguments_.push_back(argument.data());
    arguments_.push_back(nullptr);

    posix_spawn_file_actions_init(&files_);
    setFile(files_, STDIN_FILENO, input, O_RDONLY);
    setFile(files_, STDOUT_FILENO, output, O_WRONLY);
    setFile(files_, STDERR_FILENO, noFile, O_WRONLY);
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

SpawnPlan::~SpawnPlan() {
    posix_spawnattr_destroy(&attributes_);
    posix_spawn_file_actions_destroy(&files_);
}

pid_t SpawnPlan::start() const {
    pid_t process = -1;
    const int failure =
        posix_spawnp(&process, arguments_.front(), &files_, &attributes_, arguments_.data(), environ);
    return failure == 0 ? process : -1;
}

int reap(pid_t process) {
    int status = 0;
    while (waitpid(process, &status, 0) < 0)
        if (errno != EINTR) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace platform::linux
