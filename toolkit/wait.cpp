#include "toolkit/wait.h"

#include "toolkit/backend.h"
#include "toolkit/dispatch.h"
#include "toolkit/held_events.h"
#include "toolkit/worker.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <memory>
#include <utility>

namespace toolkit {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

/// Most calls are done at once, and are not worth a look at the window.
constexpr auto shortJob = 10ms;

/// So long the window may be left alone, by one call or by many short ones.
constexpr auto longestNeglect = 100ms;

/// So long a job may take to end, once nobody wants it any more.
constexpr auto grace = 400ms;

WaitObserver* observers = nullptr;
/// Before the first window there is nothing to be left alone.
Clock::time_point lastPainted = Clock::now();

/// True when the job is done without the window's having waited too long.
bool doneAtOnce(const Job& job) {
    const auto neglected = Clock::now() - lastPainted;
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(longestNeglect - neglected);
    return job.waitFor(std::clamp<std::chrono::milliseconds>(left, 0ms, shortJob));
}

} // namespace

WaitObserver::WaitObserver(std::function<void()> look)
    : look_(std::move(look)), outer_(std::exchange(observers, this)) {}

WaitObserver::~WaitObserver() {
    observers = outer_;
}

/// Whoever is unwound already releases what it holds, and may not throw.
void waitPainting(const std::function<void()>& work) {
    if (std::uncaught_exceptions() > 0) return work();
    throwIfEndIsDue();
    const auto job = std::make_shared<Job>(work);
    startJob(job, backend::wakeUp);
    if (!doneAtOnce(*job)) {
        const HeldEvents held;
        while (!job->waitFor(0ms) && !endIsDue()) {
            backend::paintPending(longestNeglect);
            lastPainted = Clock::now();
            for (const WaitObserver* observer = observers; observer != nullptr; observer = observer->outer_)
                observer->look_();
        }
    }
    if (endIsDue()) {
        if (!job->waitFor(grace)) abandonWorker();
        throw Unwind{};
    }
    job->rethrow();
}

} // namespace toolkit
