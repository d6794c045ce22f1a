// Windows are numbers here; what comes about devices comes through the application's event loop.
#include "tests/conformance/environment_window.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>

#include <array>

namespace conformance {

namespace {

constexpr std::intptr_t number = 42;
constexpr int patience = 20'000; // milliseconds
constexpr int pause = 10;

} // namespace

struct DeviceWindow::State {
    std::array<char, 5> name{"test"};
    std::array<char*, 2> arguments = {name.data(), nullptr};
    int argumentCount = 1;
    QCoreApplication application{argumentCount, arguments.data()};
};

DeviceWindow::DeviceWindow() : state_(std::make_unique<State>()) {}

DeviceWindow::~DeviceWindow() = default;

std::intptr_t DeviceWindow::handle() const {
    return number;
}

void DeviceWindow::announce(bool /*arrived*/) {}

bool DeviceWindow::waitFor(const std::function<bool()>& condition) {
    const QDeadlineTimer deadline(patience);
    QTimer wake; // a condition may come true without an event
    wake.start(pause);
    while (!condition()) {
        if (deadline.hasExpired()) return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents);
    }
    return true;
}

} // namespace conformance
