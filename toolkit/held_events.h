// Events that come while a wait paints (wait.h): they are handled afterwards, in their order.
#pragma once

#include <functional>

namespace toolkit {

bool eventsAreHeld();

/// Whether some have not had their turn yet, even if the wait is over.
bool eventsWereHeld();

/// Keeps the handler of an event for later. It is forgotten when its owner goes (null: nobody's).
void holdEvent(const void* owner, std::function<void()> handler);

/// The owner goes, and what was held for it.
void forgetHeldEvents(const void* owner) noexcept;

/// The oldest of them, which is not held any more; empty when there is none, or while events are held.
std::function<void()> takeHeldEvent();

/// Holds events as long as it lives.
class HeldEvents {
public:
    HeldEvents();
    HeldEvents(const HeldEvents&) = delete;
    HeldEvents& operator=(const HeldEvents&) = delete;
    ~HeldEvents();
};

/// Has events handled as long as it lives, also in a wait.
class HandledEvents {
public:
    HandledEvents();
    HandledEvents(const HandledEvents&) = delete;
    HandledEvents& operator=(const HandledEvents&) = delete;
    ~HandledEvents();

private:
    bool before_;
};

} // namespace toolkit
