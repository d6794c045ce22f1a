#include "platform/blocking.h"

#include <thread>

namespace platform {

namespace {

BlockingCallRunner& theRunner() {
    static BlockingCallRunner runner;
    return runner;
}

bool waiting = false;

/// Whoever waits may leave by an exception.
class Waiting {
public:
    Waiting() { waiting = true; }
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;
    ~Waiting() { waiting = false; }
};

} // namespace

void setBlockingCallRunner(BlockingCallRunner runner) {
    theRunner() = std::move(runner);
}

bool isInBlockingCall() {
    return waiting;
}

/// What is painted meanwhile may need a call as well; it is a short one, and runs where it stands.
void runBlocking(std::function<void()> call) {
    if (!theRunner() || waiting) return call();
    const Waiting now;
    theRunner()(std::move(call));
}

void pauseFor(std::chrono::milliseconds time) {
    blocking([time] { std::this_thread::sleep_for(time); });
}

} // namespace platform
