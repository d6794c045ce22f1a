// What a test needs that lives from events.
#pragma once

#include "tests/conformance/linux/udisks_mock.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

#include <gtest/gtest.h>

#include <array>
#include <memory>

namespace conformance {

/// The application and the bus, for all tests of a program:
/// `const auto* world = testing::AddGlobalTestEnvironment(new EventWorld);`
class EventWorld : public testing::Environment {
public:
    void SetUp() override {
        bus_ = std::make_unique<PrivateBus>();
        application_ = std::make_unique<QCoreApplication>(argumentCount_, arguments_.data());
    }
    void TearDown() override {
        application_.reset();
        bus_.reset();
    }

private:
    std::array<char, 5> name_{"test"};
    std::array<char*, 2> arguments_ = {name_.data(), nullptr};
    int argumentCount_ = 1;
    std::unique_ptr<PrivateBus> bus_;
    std::unique_ptr<QCoreApplication> application_;
};

/// Handles events until the condition holds; false when it does not come true in time.
template <class Condition>
bool waitFor(Condition condition) {
    const QDeadlineTimer deadline(20'000);
    QTimer wake; // a condition may come true without an event
    wake.start(10);
    while (!condition()) {
        if (deadline.hasExpired()) return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents);
    }
    return true;
}

} // namespace conformance
