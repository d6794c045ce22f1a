// How often a handler that asks for events gets them.

#include "toolkit/pump.h"

#include "fake.h"

#include "toolkit/backend.h"
#include "toolkit/dispatch.h"

#include <gtest/gtest.h>

using namespace toolkit;
using namespace std::chrono_literals;

namespace {

class Pump : public testing::Test {
protected:
    void SetUp() override {
        fake::reset();
        DoEvents();
        EXPECT_EQ(fake::computer().pumps, 1);
    }
    void TearDown() override { fake::reset(); }
};

} // namespace

TEST_F(Pump, WithinFourMillisecondsNoEventsAreHandled) {
    fake::computer().clockStep = 1ms;
    for (int i = 0; i < 3; ++i)
        DoEvents();
    EXPECT_EQ(fake::computer().pumps, 1);
    DoEvents();
    EXPECT_EQ(fake::computer().pumps, 2);
}

TEST_F(Pump, ThePauseBeginsWhenTheEventsHaveBeenHandled) {
    fake::computer().onPump = [] {
        fake::computer().clockStep = 1h;
        backend::now();
        fake::computer().clockStep = 3ms;
    };
    DoEvents();
    DoEvents();
    EXPECT_EQ(fake::computer().pumps, 2);
    DoEvents();
    EXPECT_EQ(fake::computer().pumps, 3);
}

TEST_F(Pump, EventsAreHandledForFiftyMillisecondsAtTheMost) {
    EXPECT_EQ(fake::computer().longestPump, 50ms);
}

TEST_F(Pump, TheEndIsNoticedWithinThePauseToo) {
    fake::computer().clockStep = 1ms;
    endAfterClosing();
    EXPECT_THROW(DoEvents(), Unwind);
    EXPECT_EQ(fake::computer().pumps, 1);
}
