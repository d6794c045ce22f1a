// What the progress bar says while the server says nothing.

#include "online/silence_note.h"

#include "fake.h"

#include "toolkit/wait.h"
#include "toolkit/worker.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using toolkit::ProgressState;
using namespace std::chrono_literals;

namespace {

class SilenceNote : public testing::Test {
protected:
    SilenceNote() { fake::reset(); }
    ~SilenceNote() override {
        toolkit::endWorker();
        fake::reset();
    }

    /// Somebody waits until the window has been looked after, the whole of it at least once.
    static void wait(std::optional<platform::InternetRequest::Silence> silence) {
        fake::computer().silence = silence;
        std::atomic<int> looks = 0;
        const toolkit::WaitObserver observer([&looks] { ++looks; });
        toolkit::waitPainting([&looks] {
            while (looks < 2)
                std::this_thread::sleep_for(1ms);
        });
    }

    toolkit::ProgressBar bar{"prg"};
    platform::InternetSession session{"agent", 0};
    platform::InternetRequest request{session, "http://h/a", 0};
    online::SilenceNote note{bar, request};
};

} // namespace

TEST_F(SilenceNote, ComesAfterFiveSecondsAndCountsDown) {
    wait({{4999ms, 25001ms}});
    EXPECT_EQ(bar.text(), "");
    EXPECT_EQ(bar.state(), ProgressState::None);
    wait({{5000ms, 25000ms}});
    EXPECT_EQ(bar.text(), "Server antwortet nicht, warte noch 25 s");
    EXPECT_EQ(bar.state(), ProgressState::UnknownShare);
    wait({{5001ms, 24999ms}});
    EXPECT_EQ(bar.text(), "Server antwortet nicht, warte noch 25 s");
    wait({{6001ms, 23999ms}});
    EXPECT_EQ(bar.text(), "Server antwortet nicht, warte noch 24 s");
}

TEST_F(SilenceNote, GoesWhenSomethingComes) {
    wait({{6s, 24s}});
    wait({{0s, 30s}});
    EXPECT_EQ(bar.text(), "");
    EXPECT_EQ(bar.state(), ProgressState::None);
}

TEST_F(SilenceNote, GoesWithTheWait) {
    wait({{6s, 24s}});
    note.withdraw();
    EXPECT_EQ(bar.text(), "");
    EXPECT_EQ(bar.state(), ProgressState::None);
    wait(std::nullopt);
    EXPECT_EQ(bar.text(), "");
}

TEST_F(SilenceNote, KeepsTheShareAndPutsItsTextBack) {
    bar.showShare(0.5, "Firmware 50 %");
    wait({{6s, 24s}});
    EXPECT_EQ(bar.text(), "Server antwortet nicht, warte noch 24 s");
    EXPECT_EQ(bar.state(), ProgressState::KnownShare);
    note.withdraw();
    EXPECT_EQ(bar.text(), "Firmware 50 %");
    EXPECT_EQ(bar.share(), 0.5);
}
