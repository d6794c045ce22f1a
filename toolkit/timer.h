#pragma once

#include "toolkit/control.h"

#include <chrono>
#include <functional>

namespace toolkit {

/// Fires again and again while it is enabled. What measures the time is the view: the backend's clock in the program,
/// the test's own hand in tests.
class Timer : public Control {
public:
    Timer(std::string name, std::chrono::milliseconds interval, bool enabled)
        : Control(std::move(name)), interval_(interval) {
        setEnabled(enabled);
    }

    std::function<void()> onTimer;

    std::chrono::milliseconds interval() const noexcept { return interval_; }

    /// The interval has passed. While the handler lets events run, the ones that come meanwhile are dropped.
    void tick() {
        if (!enabled() || ticking_ || !onTimer) return;
        const Ticking guard(ticking_);
        onTimer();
    }

private:
    /// The end of the program leaves the handler by an exception.
    class Ticking {
    public:
        explicit Ticking(bool& flag) noexcept : flag_(flag) { flag_ = true; }
        Ticking(const Ticking&) = delete;
        Ticking& operator=(const Ticking&) = delete;
        ~Ticking() { flag_ = false; }

    private:
        bool& flag_;
    };

    std::chrono::milliseconds interval_;
    bool ticking_ = false;
};

} // namespace toolkit
