// A process whose id a test needs, and nothing else of it.
#pragma once

#include <array>
#include <csignal>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

namespace support {

/// Somebody whom every Linux knows; only root can make processes of this user.
constexpr uid_t nobody = 65534;

/// It does nothing until it is ended. Root's may be another user's.
class WaitingProcess {
public:
    explicit WaitingProcess(uid_t user = geteuid()) {
        std::array<int, 2> ready = {};
        if (pipe(ready.data()) != 0) throw std::runtime_error("no pipe");
        id_ = fork();
        if (id_ == 0) wait(user, ready[1]);
        close(ready[1]);
        char byte = 0;
        const bool isReady = read(ready[0], &byte, 1) == 1;
        close(ready[0]);
        if (isReady) return;
        end();
        throw std::runtime_error("no process of that user");
    }
    WaitingProcess(const WaitingProcess&) = delete;
    WaitingProcess& operator=(const WaitingProcess&) = delete;
    ~WaitingProcess() { end(); }

    pid_t id() const { return id_; }
    void end() {
        if (ended_ || id_ <= 0) return;
        kill(id_, SIGKILL);
        waitpid(id_, nullptr, 0);
        ended_ = true;
    }

private:
    [[noreturn]] static void wait(uid_t user, int ready) {
        alarm(60); // should the test never get to its end
        if (user != geteuid() && setuid(user) != 0) _exit(1);
        prctl(PR_SET_DUMPABLE, 1); // like a program that the user has started
        if (write(ready, "x", 1) != 1) _exit(1);
        for (;;)
            pause();
    }

    pid_t id_ = 0;
    bool ended_ = false;
};

} // namespace support
