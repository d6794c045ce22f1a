#include "toolkit/dispatch.h"

#include "base/runtime_error.h"
#include "toolkit/backend.h"
#include "toolkit/message_style.h"
#include "toolkit/shown_text.h"

#include <cstdio>
#include <exception>
#include <optional>
#include <string>

namespace toolkit {

namespace {

constexpr const char* internalErrorAdvice =
    "Starten Sie das Programm neu. Tritt der Fehler wieder auf, melden Sie ihn dem Händler Ihres Receivers.";

std::optional<Ending> theEnding;

void beginEnding(Ending how) {
    if (!theEnding) theEnding = how;
}

std::string whatToDo(const std::string& advice) {
    return "\r\n\r\nWas ist zu tun:\r\n" + advice;
}

std::string report(const base::RuntimeError& error) {
    std::string text =
        "Laufzeitfehler '" + std::to_string(static_cast<int>(error.number())) + "':\r\n\r\n" + error.what();
    if (!error.subject().empty()) text += ":\r\n" + error.subject();
    return text + whatToDo(error.advice());
}

/// From here on no event reaches the core any more, so nothing can happen behind the box.
void endWithReport(const std::string& text) {
    if (theEnding) return;
    beginEnding({1, true});
    backend::showMessage(shownMessage(text + "\r\n\r\nDas Programm wird beendet."), Critical, {});
    backend::quit();
}

} // namespace

void dispatch(const std::function<void()>& handler) noexcept {
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

Ending ending() {
    return theEnding.value_or(Ending{});
}

void resetEnding() {
    theEnding.reset();
}

} // namespace toolkit
