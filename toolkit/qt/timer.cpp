#include "toolkit/timer.h"

#include "toolkit/held_events.h"
#include "toolkit/qt/binding.h"

#include <QTimer>

namespace toolkit::qt {

namespace {

/// Needs no part of the layout. The interval starts anew when the handler has returned, so a handler that
/// lets events run (a message box, a download) is never entered a second time.
class TimerAdaptor : public Adaptor {
public:
    explicit TimerAdaptor(Timer& timer) : Adaptor(timer), timer_(timer) {
        clock_.setSingleShot(true);
        // Qt's other clocks may be a twentieth early, which is a fifth of a second here.
        clock_.setTimerType(Qt::PreciseTimer);
        connect(&clock_, &QTimer::timeout, this, [this] { timeout(); });
        shows(Property::Enabled, [this] { start(); });
        showsChanges({Property::Interval}, [this] { start(); });
    }

    void release() override {
        clock_.stop();
        released_ = true;
        Adaptor::release();
    }

private:
    void start() {
        clock_.stop();
        if (timer_.running() && !ticking_) clock_.start(timer_.interval());
    }

    /// One that is held does not start the interval anew, which would make two of it.
    void timeout() {
        if (eventsAreHeld()) return holdEvent(this, [this] { timeout(); });
        ticking_ = true;
        send([this] { timer_.tick(); });
        ticking_ = false;
        if (!released_) start();
    }

    Timer& timer_;
    QTimer clock_;
    bool ticking_ = false;
    bool released_ = false;
};

} // namespace

std::unique_ptr<Adaptor> adaptTimer(Control& control, QObject*) {
    auto* timer = dynamic_cast<Timer*>(&control);
    return timer == nullptr ? nullptr : std::make_unique<TimerAdaptor>(*timer);
}

} // namespace toolkit::qt
