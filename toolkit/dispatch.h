// How an event enters the core, and how the program leaves it.
#pragma once

#include <functional>
#include <string>
#include <string_view>

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
/// status 1. After the program's end events are not delivered any more. While a wait paints (wait.h) the
/// event is held, and forgotten with its owner (null: nobody's).
void dispatch(const std::function<void()>& handler, const void* owner = nullptr) noexcept;

/// Dispatches what was held, unless a wait paints again. A backend calls it from its event loop when it was
/// asked to.
void handleHeldEvents() noexcept;

/// The same for a wish to end the program, whose handler begins the closing. A wait that paints is ended by
/// it: the running handler is unwound first. What was held has its turn before the closing. Once that waits
/// or is about to begin, further wishes change nothing.
void dispatchEndWish(const std::function<void()>& handler) noexcept;

/// The same for an end that does not wait: a wait that paints is over when this returns.
void dispatchEndNow(const std::function<void()>& handler) noexcept;

/// Whether the running handler has to unwind, because the end has begun or is wished.
bool endIsDue();

/// Throws Unwind when it has. For whoever would wait for something that only the user can end.
void throwIfEndIsDue();

/// How reports of errors write what they are about, which may be a path; as it stands unless this is called.
void writeSubjectsAs(std::string (*shown)(std::string_view subject));

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
