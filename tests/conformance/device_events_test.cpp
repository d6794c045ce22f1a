// Messages about drives that come and go, and the procedures that a window gets them by.
#include "platform/device_events.h"

#include "tests/conformance/environment.h"
#include "tests/conformance/environment_window.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

using namespace conformance;
using namespace platform;

namespace {

constexpr std::uintptr_t anything = 7; ///< the drives have been changed somehow

using Messages = std::vector<std::uintptr_t>;

Messages received;
bool takesItselfOff = false;
WindowProcedure previous = nullptr;
std::uint32_t typeAtMessage = DriveUnknown;

std::intptr_t noting(std::intptr_t window, std::uint32_t message, std::uintptr_t wParam,
                     std::intptr_t lParam) {
    const bool counts =
        message == deviceChangeMessage && (wParam == deviceArrival || wParam == deviceRemoveComplete);
    if (counts) {
        received.push_back(wParam);
        typeAtMessage = driveType("E:\\");
    }
    if (takesItselfOff && counts) setWindowProcedure(window, previous);
    const std::intptr_t result = callWindowProcedure(previous, window, message, wParam, lParam);
    return message == deviceChangeMessage ? result + 1000 : result;
}

std::intptr_t throwing(std::intptr_t window, std::uint32_t message, std::uintptr_t wParam,
                       std::intptr_t lParam) {
    if (message == deviceChangeMessage) throw std::runtime_error("from a window's procedure");
    return callWindowProcedure(previous, window, message, wParam, lParam);
}

class DeviceEvents : public testing::Test {
protected:
    DeviceEvents() {
        received.clear();
        takesItselfOff = false;
        typeAtMessage = DriveUnknown;
    }

public:
    ~DeviceEvents() override {
        if (previous != nullptr) setWindowProcedure(window.handle(), previous);
        setDeviceEventDelivery({});
        previous = nullptr;
    }

protected:
    void put(WindowProcedure procedure) { previous = setWindowProcedure(window.handle(), procedure); }
    std::intptr_t send(std::uintptr_t wParam) const {
        return sendWindowMessage(window.handle(), deviceChangeMessage, wParam, 0);
    }
    bool waitForMessages(std::size_t count) {
        return window.waitFor([count] { return received.size() >= count; });
    }

    Drives drives; // before the window, which would hear of the machine's own ones
    DeviceWindow window;
};

} // namespace

TEST_F(DeviceEvents, AWindowHasAProcedureFromTheStart) {
    put(noting);
    ASSERT_NE(previous, nullptr);
    EXPECT_NE(previous, noting);
}

TEST_F(DeviceEvents, MessagesGoThroughTheProcedureAndOn) {
    const std::intptr_t own = send(deviceArrival);
    put(noting);
    EXPECT_EQ(send(deviceArrival), own + 1000) << "the result of the window's own procedure comes back";
    EXPECT_EQ(send(anything), own + 1000);
    EXPECT_EQ(received, Messages{deviceArrival});
}

TEST_F(DeviceEvents, PuttingThePreviousOneBackTwiceIsHarmless) {
    const std::intptr_t own = send(deviceArrival);
    put(noting);
    EXPECT_EQ(setWindowProcedure(window.handle(), previous), noting);
    EXPECT_EQ(setWindowProcedure(window.handle(), previous), previous);
    EXPECT_EQ(send(deviceArrival), own);
    EXPECT_EQ(received, Messages());
}

TEST_F(DeviceEvents, AProcedureMayTakeItselfOff) {
    put(noting);
    takesItselfOff = true;
    send(deviceArrival);
    send(deviceRemoveComplete);
    EXPECT_EQ(received, Messages{deviceArrival});
}

TEST_F(DeviceEvents, OtherMessagesGoThroughToo) {
    const std::intptr_t own = sendWindowMessage(window.handle(), destroyMessage, 0, 0);
    put(noting);
    EXPECT_EQ(sendWindowMessage(window.handle(), destroyMessage, 0, 0), own);
}

TEST_F(DeviceEvents, ADriveComesAndGoes) {
    put(noting);
    drives.add('E', DriveRemovable);
    window.announce(true);
    ASSERT_TRUE(waitForMessages(1));
    EXPECT_EQ(received, Messages{deviceArrival});
    EXPECT_EQ(typeAtMessage, DriveRemovable) << "it is there when the message comes";
    drives.remove('E');
    window.announce(false);
    ASSERT_TRUE(waitForMessages(2));
    EXPECT_EQ(received, (Messages{deviceArrival, deviceRemoveComplete}));
    EXPECT_EQ(typeAtMessage, DriveNoRootDir);
}

TEST_F(DeviceEvents, MessagesGoByTheDelivery) {
    int looks = 0;
    int delivered = 0;
    setDeviceEventDelivery([&](const std::function<void()>& message) {
        const int before = delivered;
        EXPECT_TRUE(received.empty());
        message();
        EXPECT_EQ(received.size(), 1U);
        if (delivered == before)
            ++delivered;
        else
            ++looks; // the message was delivered inside of it
    });
    put(noting);
    drives.add('E', DriveRemovable);
    window.announce(true);
    ASSERT_TRUE(waitForMessages(1));
    EXPECT_EQ(delivered, 1);
    EXPECT_LE(looks, 1);
    setDeviceEventDelivery({});
}

TEST_F(DeviceEvents, WhatAProcedureThrowsIsCaughtByTheDelivery) {
    int caught = 0;
    setDeviceEventDelivery([&caught](const std::function<void()>& message) {
        try {
            message();
        } catch (const std::runtime_error&) {
            ++caught;
        }
    });
    put(throwing);
    drives.add('E', DriveRemovable);
    window.announce(true);
    EXPECT_TRUE(window.waitFor([&caught] { return caught == 1; }));
    setDeviceEventDelivery({});
}
