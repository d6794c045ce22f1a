// Whether a file comes in fast enough to go on waiting for it.
#pragma once

#include "platform/http_timeouts.h"

#include <chrono>
#include <cstddef>

namespace platform {

/// Only the time in which somebody waits for the file counts: between suspend() and resume() the clock stands
/// still. It is made suspended.
class HttpPace {
public:
    using Time = std::chrono::steady_clock::time_point;

    HttpPace(const HttpTimeouts& timeouts, Time now) : timeouts_(timeouts), suspendedAt_(now) {
        restart(now);
    }

    /// Somebody waits from now on.
    void resume(Time now);
    /// Nobody waits any more.
    void suspend(Time now);
    /// A server has been reached: its time begins.
    void restart(Time now);
    /// So many bytes of the file have come; 0 for something else that shows the server is alive.
    void arrived(std::size_t bytes, Time now);

    /// Of life; of no meaning while suspended.
    Time lastSign() const { return lastSign_; }
    /// When the waiting ends unless something comes before. Of no meaning while suspended.
    Time deadline() const;

private:
    HttpTimeouts timeouts_;
    bool suspended_ = true;
    Time suspendedAt_;
    Time lastSign_;
    Time begin_;            ///< of the time in which the least bytes have to come
    std::size_t bytes_ = 0; ///< since then
};

} // namespace platform
