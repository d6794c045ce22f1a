#include "toolkit/pump.h"

#include "toolkit/backend.h"
#include "toolkit/dispatch.h"

#include <chrono>

namespace toolkit {

namespace {

/// A download asks for events after every 2048 bytes, a hundred thousand times for a large file. A person
/// cannot tell when a click or a repaint comes so much later, and the download would take several times as
/// long without it.
constexpr std::chrono::milliseconds shortestPause{4};

constexpr std::chrono::milliseconds longestPump{50};

} // namespace

void DoEvents() {
    static std::chrono::steady_clock::time_point lastEnd;
    if (backend::now() - lastEnd >= shortestPause) {
        backend::pumpEvents(longestPump);
        lastEnd = backend::now();
    }
    throwIfEnding();
}

} // namespace toolkit
