#include "platform/http_pace.h"

#include <algorithm>

namespace platform {

void HttpPace::resume(Time now) {
    if (!suspended_) return;
    suspended_ = false;
    lastSign_ += now - suspendedAt_;
    begin_ += now - suspendedAt_;
}

void HttpPace::suspend(Time now) {
    if (suspended_) return;
    suspended_ = true;
    suspendedAt_ = now;
}

void HttpPace::restart(Time now) {
    lastSign_ = suspended_ ? suspendedAt_ : now;
    begin_ = lastSign_;
    bytes_ = 0;
}

void HttpPace::arrived(std::size_t bytes, Time now) {
    lastSign_ = suspended_ ? suspendedAt_ : now;
    bytes_ += bytes;
    if (bytes_ < timeouts_.leastBytes) return;
    begin_ = lastSign_;
    bytes_ = 0;
}

HttpPace::Time HttpPace::deadline() const {
    return std::min(lastSign_ + timeouts_.silence, begin_ + timeouts_.floor);
}

} // namespace platform
