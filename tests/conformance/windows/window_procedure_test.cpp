// The exchange of a real window's procedure.
#include "platform/device_events.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <dbt.h>

#include <stdexcept>
#include <vector>

using namespace platform;

namespace {

struct Received {
    std::uint32_t message;
    std::uintptr_t wParam;
};

std::vector<Received> received;     // by the test's procedure
int reachedFirst = 0;               // device messages that came to the window's own procedure
WindowProcedure previous = nullptr; // what the test's procedure passes on to

LRESULT CALLBACK firstProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_DEVICECHANGE) {
        ++reachedFirst;
        return 77;
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

std::intptr_t noting(std::intptr_t window, std::uint32_t message, std::uintptr_t wParam,
                     std::intptr_t lParam) {
    received.push_back({message, wParam});
    return callWindowProcedure(previous, window, message, wParam, lParam);
}

std::intptr_t throwing(std::intptr_t /*window*/, std::uint32_t message, std::uintptr_t /*wParam*/,
                       std::intptr_t /*lParam*/) {
    if (message == WM_DEVICECHANGE) throw std::runtime_error("from a window's procedure");
    return 0;
}

class WindowHook : public testing::Test {
protected:
    void SetUp() override {
        received.clear();
        reachedFirst = 0;
        WNDCLASSA description{};
        description.lpfnWndProc = firstProcedure;
        description.hInstance = GetModuleHandleA(nullptr);
        description.lpszClassName = "WindowHookTest";
        RegisterClassA(&description);
        handle_ = CreateWindowA("WindowHookTest", "", WS_OVERLAPPED, 0, 0, 10, 10, nullptr, nullptr,
                                description.hInstance, nullptr);
        ASSERT_NE(handle_, nullptr);
    }

    void TearDown() override {
        setDeviceEventDelivery({});
        DestroyWindow(handle_);
    }

    std::intptr_t window() const { return reinterpret_cast<std::intptr_t>(handle_); }
    std::intptr_t arrive() const {
        return sendWindowMessage(window(), WM_DEVICECHANGE, DBT_DEVICEARRIVAL, 0);
    }

private:
    HWND handle_ = nullptr;
};

} // namespace

TEST_F(WindowHook, MessagesGoThroughTheProcedureAndOn) {
    previous = setWindowProcedure(window(), noting);
    EXPECT_EQ(arrive(), 77);
    ASSERT_EQ(received.size(), 1U);
    EXPECT_EQ(received[0].message, static_cast<std::uint32_t>(WM_DEVICECHANGE));
    EXPECT_EQ(received[0].wParam, static_cast<std::uintptr_t>(DBT_DEVICEARRIVAL));
    EXPECT_EQ(reachedFirst, 1);
    setWindowProcedure(window(), previous);
}

TEST_F(WindowHook, PuttingThePreviousOneBackTwiceIsHarmless) {
    previous = setWindowProcedure(window(), noting);
    EXPECT_EQ(setWindowProcedure(window(), previous), noting);
    EXPECT_EQ(setWindowProcedure(window(), previous), previous);
    EXPECT_EQ(arrive(), 77);
    EXPECT_EQ(received.size(), 0U);
    EXPECT_EQ(reachedFirst, 1);
}

TEST_F(WindowHook, NothingThatIsThrownLeavesTheDelivery) {
    int caught = 0;
    setDeviceEventDelivery([&caught](const std::function<void()>& message) {
        try {
            message();
        } catch (const std::exception&) {
            ++caught;
        }
    });
    const WindowProcedure first = setWindowProcedure(window(), throwing);
    EXPECT_EQ(arrive(), 77) << "the window's own procedure gets the message all the same";
    EXPECT_EQ(caught, 1);
    EXPECT_EQ(reachedFirst, 1);
    setWindowProcedure(window(), first);
}

TEST_F(WindowHook, AMessageThatIsNotDeliveredReachesTheWindow) {
    setDeviceEventDelivery([](const std::function<void()>&) {});
    previous = setWindowProcedure(window(), noting);
    EXPECT_EQ(arrive(), 77);
    EXPECT_EQ(received.size(), 0U);
    EXPECT_EQ(reachedFirst, 1);
    setWindowProcedure(window(), previous);
}

TEST_F(WindowHook, ADeliveredMessageReachesTheWindowOnce) {
    setDeviceEventDelivery([](const std::function<void()>& message) { message(); });
    previous = setWindowProcedure(window(), noting);
    EXPECT_EQ(arrive(), 77);
    EXPECT_EQ(received.size(), 1U);
    EXPECT_EQ(reachedFirst, 1);
    setWindowProcedure(window(), previous);
}

TEST(WindowHookWithoutAWindow, ThereIsAProcedureAllTheSame) {
    EXPECT_NE(setWindowProcedure(0, noting), nullptr);
    EXPECT_EQ(sendWindowMessage(0, WM_DEVICECHANGE, DBT_DEVICEARRIVAL, 0), 0);
}
