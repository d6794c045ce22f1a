#pragma once

#include "toolkit/control.h"

#include <algorithm>

namespace toolkit {

enum class ProgressState {
    None,         ///< no bar; the text, if there is one, stands alone
    KnownShare,   ///< a bar that is filled so far
    UnknownShare, ///< a bar that shows by moving that something is done
};

/// How far something has come, and a text that says so. Its place is reserved in the window: nothing moves
/// when it appears. A desktop shows the bar at the program's place in its taskbar, too.
class ProgressBar : public Control {
public:
    using Control::Control;

    ProgressState state() const noexcept { return state_; }
    /// 0 to 1; counts with a known share only.
    double share() const noexcept { return share_; }
    const std::string& text() const noexcept { return text_; }

    /// A share below 0 is shown as 0, one above 1 as 1.
    void showShare(double share, std::string_view text) {
        setValue(ProgressState::KnownShare, std::clamp(share, 0.0, 1.0));
        setText(text);
    }

    void showBusy(std::string_view text) {
        setValue(ProgressState::UnknownShare, 0);
        setText(text);
    }

    /// A text without a bar.
    void showText(std::string_view text) {
        setValue(ProgressState::None, 0);
        setText(text);
    }

    void clear() { showText({}); }

    /// Another text beside the bar as it is.
    void setText(std::string_view text) { assign(text_, text, Property::Text); }

    /// Has the text told at once to who cannot see it.
    void alert() { notify(Property::Alert); }

private:
    void setValue(ProgressState state, double share) {
        if (state_ == state && share_ == share) return;
        state_ = state;
        share_ = share;
        notify(Property::Value);
    }

    ProgressState state_ = ProgressState::None;
    double share_ = 0;
    std::string text_;
};

} // namespace toolkit
