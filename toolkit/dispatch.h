// How an event enters the core, and how the program leaves it.
#pragma once

#include <functional>

namespace toolkit {

/// How a run of the program ended.
struct Ending {
    int status = 0;      ///< exit status: 0, or 1 after an unhandled error
    bool atOnce = false; ///< nothing that closing does has been done, and nothing of it may be done any more
};

/// Thrown through a running handler when the program ends in the middle of it. Nobody else catches it;
/// objects on its way release what they hold of the system and touch nothing of the program.
struct Unwind {};

/// Runs the handler of one event. A backend hands every event to the core through this function, and no
/// exception ever gets past it: an unhandled error is shown to the user, once, and ends the program with
/// status 1. After the program's end events are not delivered any more.
void dispatch(const std::function<void()>& handler) noexcept;

/// Ends the program after its closing sequence: the event loops return.
void endAfterClosing();

/// Ends the program at once, without anything that closing does.
[[noreturn]] void endAtOnce();

/// Throws Unwind when the program's end has begun. For whoever has just let events be handled.
void throwIfEnding();

/// How the program ends; meaningful when the event loop has returned.
Ending ending();

/// Forgets an earlier ending; a backend calls it when it starts.
void resetEnding();

} // namespace toolkit
