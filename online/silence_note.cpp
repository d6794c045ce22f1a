#include "online/silence_note.h"

#include <chrono>
#include <utility>

namespace online {

using std::chrono::seconds;

SilenceNote::SilenceNote(toolkit::ProgressBar& bar, const platform::InternetRequest& request)
    : bar_(bar), request_(request), observer_([this] { look(); }) {}

void SilenceNote::look() {
    constexpr seconds longestWithoutAWord{5};
    const auto silence = request_.silence();
    if (!silence || silence->lasted < longestWithoutAWord) return withdraw();
    if (!std::exchange(shown_, true)) {
        before_ = bar_.text();
        alone_ = bar_.state() == toolkit::ProgressState::None;
    }
    const auto left = std::chrono::ceil<seconds>(silence->left).count();
    const std::string text = "Server antwortet nicht, warte noch " + std::to_string(left) + " s";
    if (alone_)
        bar_.showBusy(text);
    else
        bar_.setText(text);
}

void SilenceNote::withdraw() {
    if (!std::exchange(shown_, false)) return;
    if (alone_)
        bar_.showText(before_);
    else
        bar_.setText(before_);
}

} // namespace online
