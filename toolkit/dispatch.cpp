#include "toolkit/dispatch.h"

#include "base/runtime_error.h"
#include "toolkit/backend.h"
#include "toolkit/held_events.h"
#include "toolkit/message_style.h"
#include "toolkit/scoped_flag.h"
#include "toolkit/shown_text.h"

#include <chrono>
#include <cstdio>
#include <exception>
#include <optional>
#include <string>
#include <utility>

namespace toolkit {

namespace {

constexpr const char* internalErrorAdvice =
    "Starten Sie das Programm neu. Tritt der Fehler wieder auf, melden Sie ihn dem Händler Ihres Receivers.";

std::optional<Ending> theEnding;

std::string (*shownSubject)(std::string_view) = nullptr;

std::function<void()> endWish;

/// The closing has begun. Who wishes it once more does not end what it still saves.
bool granting = false;

void beginEnding(Ending how) {
    if (!theEnding) theEnding = how;
}

std::string whatToDo(const std::string& advice) {
    return "\r\n\r\nWas ist zu tun:\r\n" + advice;
}

std::string report(const base::RuntimeError& error) {
    std::string text =
        "Laufzeitfehler '" + std::to_string(static_cast<int>(error.number())) + "':\r\n\r\n" + error.what();
    if (!error.subject().empty())
        text += ":\r\n" + (shownSubject == nullptr ? error.subject() : shownSubject(error.subject()));
    return text + whatToDo(error.advice());
}

/// From here on no event reaches the core any more, so nothing can happen behind the box.
void endWithReport(const std::string& text) {
    if (theEnding) return;
    beginEnding({1, true});
    backend::showMessage(shownMessage(text + "\r\n\r\nDas Programm wird beendet."), Critical, {});
    backend::quit();
}

void run(const std::function<void()>& handler) noexcept {
    if (theEnding) return;
    try {
        handler();
    } catch (const Unwind&) {
        // The program ends; whoever began it has told the event loops already.
    } catch (const base::RuntimeError& error) {
        endWithReport(report(error));
    } catch (const std::exception& error) {
        // What it says is for who mends the program.
        std::fprintf(stderr, "Interner Fehler: %s\n", error.what());
        endWithReport("Interner Fehler" + whatToDo(internalErrorAdvice));
    }
}

} // namespace

/// Each may lead to another wait, which holds the rest.
void handleHeldEvents() noexcept {
    while (const std::function<void()> handler = takeHeldEvent())
        dispatch(handler);
}

namespace {

/// What the user did before comes first: a text that was typed is asked about.
void grantEnd() noexcept {
    constexpr std::chrono::milliseconds longestPump{1000};
    const ScopedFlag now(granting);
    backend::pumpEvents(longestPump);
    handleHeldEvents();
    run(std::exchange(endWish, {}));
}

} // namespace

void dispatch(const std::function<void()>& handler, const void* owner) noexcept {
    if (eventsAreHeld()) return holdEvent(owner, handler);
    run(handler);
    if (endWish && !granting) grantEnd();
}

void dispatchEndWish(const std::function<void()>& handler) noexcept {
    if (granting && (eventsAreHeld() || endWish)) return;
    if (eventsAreHeld()) {
        endWish = handler;
        return;
    }
    // Not among the held events: one of them may have opened a box, and then the others wait for its answer.
    if (eventsWereHeld() && !granting) {
        endWish = handler;
        return grantEnd();
    }
    const ScopedFlag now(granting);
    run(handler);
}

void dispatchEndNow(const std::function<void()>& handler) noexcept {
    const HandledEvents now;
    run(handler);
}

bool endIsDue() {
    return theEnding || endWish;
}

void writeSubjectsAs(std::string (*shown)(std::string_view subject)) {
    shownSubject = shown;
}

void endAfterClosing() {
    beginEnding({0, false});
    backend::quit();
}

void endAtOnce() {
    beginEnding({0, true});
    backend::quit();
    throw Unwind{};
}

void throwIfEnding() {
    if (theEnding) throw Unwind{};
}

void throwIfEndIsDue() {
    if (endIsDue()) throw Unwind{};
}

Ending ending() {
    return theEnding.value_or(Ending{});
}

void resetEnding() {
    theEnding.reset();
    endWish = {};
}

} // namespace toolkit
