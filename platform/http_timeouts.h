// How long a download waits.
#pragma once

#include <chrono>
#include <cstddef>

namespace platform {

struct HttpTimeouts {
    /// From the look-up of the name to a connection that can be used.
    std::chrono::milliseconds connect = std::chrono::seconds(60);
    /// Without a single byte, once connected.
    std::chrono::milliseconds silence = std::chrono::seconds(30);
    /// In which at least `leastBytes` of the file have to come; headers do not count.
    std::chrono::milliseconds floor = std::chrono::seconds(60);
    std::size_t leastBytes = 1024;
};

/// The time-outs of every request opened from now on. The program leaves them alone; tests cannot wait that
/// long.
HttpTimeouts& httpTimeouts();

} // namespace platform
