#include "toolkit/timer.h"

#include "toolkit/held_events.h"
#include "toolkit/win32/binding.h"

#include <map>

namespace toolkit::win32 {

namespace {

/// Needs no part of the layout. The interval starts anew when the handler has returned, so a handler that
/// lets events run (a message box, a download) is never entered a second time.
class TimerAdaptor : public Adaptor {
public:
    TimerAdaptor(Timer& timer, FormWindow& window) : Adaptor(timer, window), timer_(timer) {
        shows(Property::Enabled, [this] { start(); });
        showsChanges({Property::Interval}, [this] { start(); });
    }
    ~TimerAdaptor() override { stop(); }

    void release() override {
        stop();
        Adaptor::release();
    }

private:
    static std::map<UINT_PTR, TimerAdaptor*>& running() {
        static std::map<UINT_PTR, TimerAdaptor*> timers;
        return timers;
    }

    static void CALLBACK procedure(HWND, UINT, UINT_PTR number, DWORD) noexcept {
        const auto found = running().find(number);
        if (found != running().end()) found->second->timeout();
    }

    void start() {
        stop();
        if (!timer_.running() || ticking_) return;
        number_ = SetTimer(nullptr, 0, static_cast<UINT>(timer_.interval().count()), procedure);
        if (number_ != 0) running()[number_] = this;
    }

    void stop() {
        if (number_ == 0) return;
        KillTimer(nullptr, number_);
        running().erase(number_);
        number_ = 0;
    }

    void timeout() {
        stop();
        if (eventsAreHeld()) return holdEvent(this, [this] { timeout(); });
        const FormWindow::Busy busy(window());
        ticking_ = true;
        send([this] { timer_.tick(); });
        ticking_ = false;
        if (bound()) start();
    }

    Timer& timer_;
    UINT_PTR number_ = 0;
    bool ticking_ = false;
};

} // namespace

std::unique_ptr<Adaptor> adaptTimer(Control& control, const Place& place) {
    auto* timer = dynamic_cast<Timer*>(&control);
    return timer == nullptr ? nullptr : std::make_unique<TimerAdaptor>(*timer, place.window);
}

} // namespace toolkit::win32
