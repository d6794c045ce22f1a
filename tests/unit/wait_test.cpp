// Waiting for what may block, with a window that lives.

#include "toolkit/wait.h"

#include "fake.h"

#include "platform/blocking.h"
#include "toolkit/dispatch.h"
#include "toolkit/held_events.h"
#include "toolkit/message_box.h"
#include "toolkit/worker.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <stdexcept>
#include <thread>

using namespace toolkit;
using namespace std::chrono_literals;

namespace {

/// A job that lasts until somebody opens the gate.
class Gate {
public:
    void open() {
        if (!opened_.exchange(true)) promise_.set_value();
    }
    std::function<void()> job() const {
        return [future = future_] { future.wait(); };
    }

private:
    std::promise<void> promise_;
    std::shared_future<void> future_ = promise_.get_future().share();
    std::atomic<bool> opened_ = false;
};

class Wait : public testing::Test {
protected:
    void SetUp() override {
        fake::reset();
        // Each look at the window is one more step of the test.
        fake::computer().onPaint = [this] {
            if (fake::computer().paints > lastPaint) gate.open();
            if (meanwhile) std::exchange(meanwhile, {})();
        };
    }
    void TearDown() override {
        gate.open();
        handleHeldEvents();
        endWorker();
        while (abandonedJobsRun())
            std::this_thread::yield();
        fake::reset();
    }

    Gate gate;
    int lastPaint = 3;
    std::function<void()> meanwhile; ///< comes while it is waited for
    std::vector<std::string> journal;
};

} // namespace

TEST_F(Wait, TheJobIsDoneInAnotherThread) {
    std::thread::id where;
    waitPainting([&where] { where = std::this_thread::get_id(); });
    EXPECT_NE(where, std::thread::id());
    EXPECT_NE(where, std::this_thread::get_id());
}

TEST_F(Wait, TheWindowIsPaintedUntilTheJobIsDone) {
    waitPainting(gate.job());
    EXPECT_GT(fake::computer().paints, lastPaint);
    EXPECT_FALSE(eventsAreHeld());
}

TEST_F(Wait, WhatTheJobThrowsIsThrownHere) {
    EXPECT_THROW(waitPainting([] { throw std::runtime_error("a"); }), std::runtime_error);
    waitPainting([this] { journal.emplace_back("the next one"); });
    EXPECT_EQ(journal, std::vector<std::string>{"the next one"});
}

TEST_F(Wait, EventsWaitAndKeepTheirOrder) {
    meanwhile = [this] {
        dispatch([this] { journal.emplace_back("first"); });
        dispatch([this] { journal.emplace_back("second"); });
    };
    waitPainting(gate.job());
    EXPECT_EQ(journal, std::vector<std::string>());
    EXPECT_EQ(fake::computer().heldEventsAskedFor, 1);
    handleHeldEvents();
    EXPECT_EQ(journal, (std::vector<std::string>{"first", "second"}));
}

TEST_F(Wait, AnEventOfSomebodyWhoIsGoneIsForgotten) {
    const int owner = 0;
    meanwhile = [this, &owner] {
        dispatch([this] { journal.emplace_back("gone"); }, &owner);
        dispatch([this] { journal.emplace_back("there"); });
    };
    waitPainting(gate.job());
    forgetHeldEvents(&owner);
    handleHeldEvents();
    EXPECT_EQ(journal, std::vector<std::string>{"there"});
}

TEST_F(Wait, TheHandlerOfAHeldEventMayWaitItself) {
    meanwhile = [this] {
        dispatch([this] {
            waitPainting([] {});
            journal.emplace_back("first");
        });
        dispatch([this] { journal.emplace_back("second"); });
    };
    waitPainting(gate.job());
    handleHeldEvents();
    EXPECT_EQ(journal, (std::vector<std::string>{"first", "second"}));
}

TEST_F(Wait, AnObserverLooksWhileItIsThere) {
    int looks = 0;
    {
        const WaitObserver observer([&looks] { ++looks; });
        waitPainting(gate.job());
    }
    EXPECT_GT(looks, 1);
    const int before = looks;
    gate.open();
    waitPainting([] { std::this_thread::sleep_for(30ms); });
    EXPECT_EQ(looks, before);
}

/// By then there may be no event loop any more.
TEST_F(Wait, AJobThatWasLeftAloneWakesNobody) {
    lastPaint = 1000;
    meanwhile = [] { dispatchEndWish([] {}); };
    dispatch([this] { waitPainting(gate.job()); });
    ASSERT_TRUE(abandonedJobsRun());
    gate.open();
    while (abandonedJobsRun())
        std::this_thread::yield();
    EXPECT_EQ(fake::computer().wakeUps, 0);
}

TEST_F(Wait, TheWishToEndUnwindsTheHandlerAndThenCloses) {
    lastPaint = 1000;
    meanwhile = [this] {
        dispatchEndWish([this] {
            journal.emplace_back("closing");
            endAfterClosing();
        });
    };
    const auto begin = std::chrono::steady_clock::now();
    dispatch([this] {
        const std::shared_ptr<void> scope(nullptr, [this](void*) { journal.emplace_back("released"); });
        waitPainting(gate.job());
        journal.emplace_back("went on");
    });
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 5s); // the gate was never opened
    EXPECT_EQ(journal, (std::vector<std::string>{"released", "closing"}));
    EXPECT_TRUE(abandonedJobsRun());
    EXPECT_EQ(ending().status, 0);
}

TEST_F(Wait, WhatTheUserDidBeforeTheWishComesBeforeTheClosing) {
    meanwhile = [this] {
        dispatch([this] { journal.emplace_back("typed"); });
        dispatch([this] {
            messageBox("nobody answers", OkOnly);
            journal.emplace_back("answered");
        });
        dispatchEndWish([this] { journal.emplace_back("closing"); });
    };
    dispatch([this] { waitPainting(gate.job()); });
    EXPECT_EQ(journal, (std::vector<std::string>{"typed", "closing"}));
    EXPECT_EQ(fake::computer().pumps, 1);
}

/// The event loop has not come to what was held when the wish comes.
TEST_F(Wait, AWishAfterTheWaitDoesNotOvertakeWhatWasHeld) {
    meanwhile = [this] { dispatch([this] { journal.emplace_back("typed"); }); };
    dispatch([this] { waitPainting(gate.job()); });
    dispatchEndWish([this] { journal.emplace_back("closing"); });
    EXPECT_EQ(journal, (std::vector<std::string>{"typed", "closing"}));
}

/// What is behind that one in the queue waits for the box, and so would the wish.
TEST_F(Wait, AWishWhileAHeldEventHasABoxOpenIsGranted) {
    meanwhile = [this] {
        dispatch([this] {
            dispatchEndWish([this] { journal.emplace_back("closing"); }); // from the loop of its box
            EXPECT_EQ(journal, (std::vector<std::string>{"typed", "closing"}));
        });
        dispatch([this] { journal.emplace_back("typed"); });
    };
    dispatch([this] { waitPainting(gate.job()); });
    handleHeldEvents();
    EXPECT_EQ(journal, (std::vector<std::string>{"typed", "closing"}));
}

TEST_F(Wait, WhoIsUnwoundMayStillCallTheSystem) {
    bool done = false;
    try {
        const std::shared_ptr<void> scope(nullptr,
                                          [&done](void*) { waitPainting([&done] { done = true; }); });
        throw Unwind{};
    } catch (const Unwind&) {
    }
    EXPECT_TRUE(done);
}

TEST_F(Wait, TheClosingHasAWorkerOfItsOwn) {
    lastPaint = 1000;
    meanwhile = [this] {
        dispatchEndWish([this] { waitPainting([this] { journal.emplace_back("saved"); }); });
    };
    dispatch([this] { waitPainting(gate.job()); });
    EXPECT_EQ(journal, std::vector<std::string>{"saved"});
    EXPECT_TRUE(abandonedJobsRun());
}

TEST_F(Wait, WhoWishesTheEndTwiceDoesNotEndTheClosing) {
    Gate second;
    meanwhile = [this, &second] {
        dispatchEndWish([this, &second] {
            meanwhile = [this, &second] {
                dispatchEndWish([this] { journal.emplace_back("closed twice"); });
                second.open();
            };
            waitPainting(second.job());
            journal.emplace_back("closed");
        });
    };
    dispatch([this] { waitPainting(gate.job()); });
    EXPECT_EQ(journal, std::vector<std::string>{"closed"});
}

TEST_F(Wait, AClosingThatBeganAtOnceIsNotEndedEither) {
    meanwhile = [this] { dispatchEndWish([this] { journal.emplace_back("closed twice"); }); };
    dispatchEndWish([this] {
        waitPainting(gate.job());
        journal.emplace_back("closed");
    });
    EXPECT_EQ(journal, std::vector<std::string>{"closed"});
}

TEST_F(Wait, AWishThatComesRightBeforeTheClosingAddsNothing) {
    meanwhile = [this] {
        dispatch([this] { dispatchEndWish([this] { journal.emplace_back("closing too early"); }); });
        dispatchEndWish([this] { journal.emplace_back("closing"); });
    };
    dispatch([this] { waitPainting(gate.job()); });
    EXPECT_EQ(journal, std::vector<std::string>{"closing"});
}

TEST_F(Wait, AnEndThatCannotWaitClosesInTheMiddle) {
    meanwhile = [this] {
        dispatchEndNow([this] {
            EXPECT_FALSE(eventsAreHeld());
            journal.emplace_back("closing");
            endAfterClosing();
        });
        EXPECT_TRUE(eventsAreHeld());
    };
    dispatch([this] {
        waitPainting(gate.job());
        journal.emplace_back("went on");
    });
    EXPECT_EQ(journal, std::vector<std::string>{"closing"});
}

TEST_F(Wait, ACallOfTheSystemIsRunAsTheProgramWantsIt) {
    platform::setBlockingCallRunner(waitPainting);
    std::thread::id where;
    const int answer = platform::blocking([this, &where] {
        where = std::this_thread::get_id();
        gate.job()();
        return 42;
    });
    EXPECT_EQ(answer, 42);
    EXPECT_NE(where, std::this_thread::get_id());
    EXPECT_GT(fake::computer().paints, 0);
    platform::setBlockingCallRunner({});
    platform::blocking([&where] { where = std::this_thread::get_id(); });
    EXPECT_EQ(where, std::this_thread::get_id());
}

TEST_F(Wait, WhatIsPaintedMeanwhileCallsTheSystemWhereItStands) {
    platform::setBlockingCallRunner(waitPainting);
    std::thread::id where;
    meanwhile = [&where] {
        EXPECT_TRUE(platform::isInBlockingCall());
        platform::blocking([&where] { where = std::this_thread::get_id(); });
    };
    platform::blocking(gate.job());
    platform::setBlockingCallRunner({});
    EXPECT_EQ(where, std::this_thread::get_id());
    EXPECT_FALSE(platform::isInBlockingCall());
}
