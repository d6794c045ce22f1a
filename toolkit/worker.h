// The thread for what may block. One job at a time.
#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace toolkit {

/// A job that a thread does; whoever waits for it may give it up.
class Job {
public:
    explicit Job(std::function<void()> work);
    Job(const Job&) = delete;
    Job& operator=(const Job&) = delete;
    ~Job();

    /// Waits for it, and tells whether it is done.
    bool waitFor(std::chrono::milliseconds longest) const;

    /// What it threw is thrown here. To be called when it is done.
    void rethrow() const;

private:
    friend void startJob(const std::shared_ptr<Job>& job, std::function<void()> whenDone);
    struct State;
    std::unique_ptr<State> state_;
};

/// Starts the job in the worker thread, which is started when need be; where the system has no thread to
/// spare, the job is done at once. `whenDone` is called in that thread, unless the worker has been abandoned
/// by then; it may not wait for anything.
void startJob(const std::shared_ptr<Job>& job, std::function<void()> whenDone);

/// Nobody waits for the running job any more: its thread is left alone with it, and the next job gets
/// another.
void abandonWorker();

/// Ends the worker thread, which must be idle.
void endWorker();

/// Whether an abandoned job still runs. The process must then not end in the ordinary way, which takes away
/// what the job needs.
bool abandonedJobsRun();

} // namespace toolkit
