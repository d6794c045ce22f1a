#include "platform/device_events.h"

#include "platform/linux/drives/drive_watch.h"

#include <QCoreApplication>
#include <QPointer>

#include <map>
#include <utility>
#include <vector>

namespace platform {

namespace {

struct State {
    std::map<std::intptr_t, WindowProcedure> procedures; // those that are not the first ones
    DeviceEventDelivery delivery;
    QPointer<linux::DriveWatch> watch; // belongs to the application
};

State& state() {
    static State theState;
    return theState;
}

/// A window of this system does nothing with such messages of its own accord.
std::intptr_t firstProcedure(std::intptr_t /*window*/, std::uint32_t /*message*/, std::uintptr_t /*wParam*/,
                             std::intptr_t /*lParam*/) {
    return 0;
}

WindowProcedure procedureOf(std::intptr_t window) {
    const auto found = state().procedures.find(window);
    return found == state().procedures.end() ? firstProcedure : found->second;
}

void asEvent(const std::function<void()>& message) {
    const DeviceEventDelivery delivery = state().delivery; // it may be exchanged meanwhile
    if (delivery)
        delivery(message);
    else
        message();
}

void deliver(linux::DriveChange change) {
    const std::uintptr_t wParam =
        change == linux::DriveChange::Arrival ? deviceArrival : deviceRemoveComplete;
    std::vector<std::intptr_t> windows; // a procedure may take itself off
    for (const auto& [window, procedure] : state().procedures)
        windows.push_back(window);
    for (const std::intptr_t window : windows) {
        const auto message = [window, wParam] { sendWindowMessage(window, deviceChangeMessage, wParam, 0); };
        asEvent(message);
    }
}

void watchAsNeeded() {
    const bool needed = !state().procedures.empty();
    QPointer<linux::DriveWatch>& watch = state().watch;
    if (needed && !watch && QCoreApplication::instance() != nullptr)
        watch = new linux::DriveWatch(deliver, asEvent, QCoreApplication::instance());
    if (!needed && watch) {
        watch->stop();
        watch->deleteLater(); // this may be one of its messages
        watch.clear();
    }
}

} // namespace

WindowProcedure setWindowProcedure(std::intptr_t window, WindowProcedure next) {
    const WindowProcedure previous = procedureOf(window);
    if (next == firstProcedure || next == nullptr)
        state().procedures.erase(window);
    else
        state().procedures[window] = next;
    watchAsNeeded();
    return previous;
}

std::intptr_t callWindowProcedure(WindowProcedure previous, std::intptr_t window, std::uint32_t message,
                                  std::uintptr_t wParam, std::intptr_t lParam) {
    return previous(window, message, wParam, lParam);
}

std::intptr_t sendWindowMessage(std::intptr_t window, std::uint32_t message, std::uintptr_t wParam,
                                std::intptr_t lParam) {
    return callWindowProcedure(procedureOf(window), window, message, wParam, lParam);
}

void setDeviceEventDelivery(DeviceEventDelivery delivery) {
    state().delivery = std::move(delivery);
}

} // namespace platform
