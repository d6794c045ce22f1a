#include "toolkit/worker.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace toolkit {

struct Job::State {
    std::function<void()> work;
    std::exception_ptr error;
    mutable std::mutex mutex;
    mutable std::condition_variable changed;
    bool done = false;

    void run() {
        try {
            work();
        } catch (...) { // whatever it is, the one who waits gets it
            error = std::current_exception();
        }
        work = {};
        const std::lock_guard lock(mutex);
        done = true;
        changed.notify_all();
    }
};

Job::Job(std::function<void()> work) : state_(std::make_unique<State>()) {
    state_->work = std::move(work);
}

Job::~Job() = default;

bool Job::waitFor(std::chrono::milliseconds longest) const {
    std::unique_lock lock(state_->mutex);
    return state_->changed.wait_for(lock, longest, [this] { return state_->done; });
}

void Job::rethrow() const {
    if (state_->error) std::rethrow_exception(state_->error);
}

namespace {

/// A thread that does what it is given, one after the other, until this object goes.
class Worker {
public:
    Worker() : thread_([this] { run(); }) {}
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;
    ~Worker() {
        {
            const std::lock_guard lock(mutex_);
            ending_ = true;
        }
        changed_.notify_all();
        thread_.join();
    }

    void give(std::function<void()> work, std::function<void()> whenDone) {
        const std::lock_guard lock(mutex_);
        given_.push_back({std::move(work), std::move(whenDone)});
        changed_.notify_all();
    }

    /// From here on nobody is told that work is done: who would be told may be gone.
    void abandon() {
        const std::lock_guard lock(mutex_);
        abandoned_ = true;
    }

    bool busy() const {
        const std::lock_guard lock(mutex_);
        return working_ || !given_.empty();
    }

private:
    struct Task {
        std::function<void()> work;
        std::function<void()> whenDone;
    };

    void run() {
        std::unique_lock lock(mutex_);
        for (;;) {
            changed_.wait(lock, [this] { return ending_ || !given_.empty(); });
            if (given_.empty()) return;
            const Task task = std::move(given_.front());
            given_.pop_front();
            working_ = true;
            lock.unlock();
            task.work();
            lock.lock();
            working_ = false;
            if (!abandoned_) task.whenDone();
        }
    }

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Task> given_;
    bool working_ = false;
    bool abandoned_ = false;
    bool ending_ = false;
    std::thread thread_; // the last: it uses the others
};

std::unique_ptr<Worker>& theWorker() {
    static std::unique_ptr<Worker> worker;
    return worker;
}

/// They outlive the program's statics, as their threads may.
std::vector<Worker*>& abandonedWorkers() {
    static auto* const workers = new std::vector<Worker*>;
    return *workers;
}

bool workerIsThere() {
    try {
        if (!theWorker()) theWorker() = std::make_unique<Worker>();
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

} // namespace

void startJob(const std::shared_ptr<Job>& job, std::function<void()> whenDone) {
    if (!workerIsThere()) return job->state_->run();
    theWorker()->give([job] { job->state_->run(); }, std::move(whenDone));
}

void abandonWorker() {
    theWorker()->abandon();
    abandonedWorkers().push_back(theWorker().release());
}

void endWorker() {
    theWorker().reset();
}

bool abandonedJobsRun() {
    const auto& workers = abandonedWorkers();
    return std::any_of(workers.begin(), workers.end(), [](const Worker* worker) { return worker->busy(); });
}

} // namespace toolkit
