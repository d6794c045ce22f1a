#include "toolkit/progress_bar.h"

#include "platform/taskbar.h"
#include "toolkit/qt/binding.h"
#include "toolkit/qt/captioned.h"
#include "toolkit/qt/progress_bar_widget.h"
#include "toolkit/shown_text.h"

#include <cmath>

namespace toolkit::qt {

namespace {

class ProgressBarAdaptor : public WidgetAdaptor {
public:
    ProgressBarAdaptor(ProgressBar& bar, ProgressBarWidget& widget)
        : WidgetAdaptor(bar, widget), bar_(bar), widget_(widget) {
        shows(Property::Value, [this] { showValue(); });
        shows(Property::Text, [this] { widget_.setText(fromUtf8(shownText(bar_.text()))); });
        showsChanges({Property::Alert}, [this] { widget_.alert(); });
    }

private:
    void showValue() {
        switch (bar_.state()) {
        case ProgressState::None:
            widget_.showNothing();
            showInTaskbar(platform::TaskbarProgress::None);
            break;
        case ProgressState::KnownShare:
            widget_.showShare(static_cast<int>(std::lround(bar_.share() * ProgressBarWidget::fullBar)));
            showInTaskbar(platform::TaskbarProgress::KnownShare);
            break;
        case ProgressState::UnknownShare:
            widget_.showBusy();
            showInTaskbar(platform::TaskbarProgress::UnknownShare);
            break;
        }
    }

    /// Of a bar that has not been used yet nobody need be told.
    void showInTaskbar(platform::TaskbarProgress progress) {
        if (progress == shown_ && progress != platform::TaskbarProgress::KnownShare) return;
        constexpr std::intptr_t anyWindow = 0;
        platform::showInTaskbar(anyWindow, shown_ = progress, bar_.share());
    }

    ProgressBar& bar_;
    ProgressBarWidget& widget_;
    platform::TaskbarProgress shown_ = platform::TaskbarProgress::None;
};

} // namespace

std::unique_ptr<Adaptor> adaptProgressBar(Control& control, QObject* part) {
    return adaptWidget<ProgressBarAdaptor, ProgressBar, ProgressBarWidget>(control, part);
}

} // namespace toolkit::qt
