#include "toolkit/held_events.h"

#include "toolkit/backend.h"

#include <deque>
#include <utility>

namespace toolkit {

namespace {

struct HeldEvent {
    const void* owner;
    std::function<void()> handler;
};

std::deque<HeldEvent>& heldEvents() {
    static std::deque<HeldEvent> events;
    return events;
}

bool holding = false;

} // namespace

bool eventsAreHeld() {
    return holding;
}

bool eventsWereHeld() {
    return !heldEvents().empty();
}

void holdEvent(const void* owner, std::function<void()> handler) {
    heldEvents().push_back({owner, std::move(handler)});
}

void forgetHeldEvents(const void* owner) noexcept {
    std::erase_if(heldEvents(), [owner](const HeldEvent& event) { return event.owner == owner; });
}

std::function<void()> takeHeldEvent() {
    if (holding || heldEvents().empty()) return {};
    std::function<void()> handler = std::move(heldEvents().front().handler);
    heldEvents().pop_front();
    return handler;
}

HandledEvents::HandledEvents() : before_(std::exchange(holding, false)) {}

HandledEvents::~HandledEvents() {
    holding = before_;
}

HeldEvents::HeldEvents() {
    holding = true;
}

HeldEvents::~HeldEvents() {
    holding = false;
    if (!heldEvents().empty()) backend::handleHeldEventsSoon();
}

} // namespace toolkit
