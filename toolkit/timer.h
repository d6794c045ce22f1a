#pragma once

#include "toolkit/control.h"
#include "toolkit/scoped_flag.h"

#include <chrono>
#include <functional>

namespace toolkit {

/// Fires again and again while it is enabled. What measures the time is the view: the backend's clock in the
/// program, the test's own hand in tests.
class Timer : public Control {
public:
    Timer(std::string name, std::chrono::milliseconds interval, bool enabled)
        : Control(std::move(name)), interval_(interval) {
        setEnabled(enabled);
    }

    std::function<void()> onTimer;

    std::chrono::milliseconds interval() const noexcept { return interval_; }

    /// The time is measured: the view starts with a whole interval when this becomes true.
    bool running() const noexcept { return enabled() && !held_; }

    /// Holds the timer, or lets it go. A form holds its timers while it loads: its load may ask the user
    /// something and take minutes, and a tick in the middle of it would find half a window.
    void hold(bool held) { assign(held_, held, Property::Enabled); }

    /// The interval has passed. While the handler lets events run, the ones that come meanwhile are dropped.
    void tick() {
        if (!running() || ticking_ || !onTimer) return;
        const ScopedFlag guard(ticking_);
        onTimer();
    }

private:
    std::chrono::milliseconds interval_;
    bool ticking_ = false;
    bool held_ = false;
};

} // namespace toolkit
