#include "online/transfer_progress.h"

#include "platform/number_text.h"
#include "toolkit/clock.h"

#include <algorithm>

namespace online {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr milliseconds shortestPause{100}; ///< between two texts

/// What comes at first stood in some buffer on the way, and says nothing of the rest.
constexpr seconds fromBuffers{1};

constexpr seconds shortestMeasure{2};

constexpr seconds remembered{10}; ///< the speed is that of this time

/// A time that is only guessed is told in steps that do not promise more.
std::string roughly(seconds time) {
    constexpr seconds::rep step = 5;
    constexpr seconds::rep minute = 60;
    constexpr seconds::rep hour = 60 * minute;
    const auto roundedUp = [&time](seconds::rep unit) { return (time.count() + unit - 1) / unit; };
    if (time.count() > hour) return std::to_string(roundedUp(hour)) + " h";
    if (time.count() > minute) return std::to_string(roundedUp(minute)) + " min";
    return std::to_string(roundedUp(step) * step) + " s";
}

} // namespace

std::string amount(std::uint64_t bytes, std::optional<std::uint64_t> announced) {
    constexpr std::uint64_t kilobyte = 1024;
    constexpr std::uint64_t megabyte = kilobyte * kilobyte;
    const bool small = announced && *announced < megabyte;
    const auto number = [unit = static_cast<double>(small ? kilobyte : megabyte)](std::uint64_t value) {
        return platform::formatNumber(static_cast<double>(value) / unit, 1);
    };
    return number(bytes) + (announced ? " von " + number(*announced) : "") + (small ? " KB" : " MB");
}

TransferProgress::TransferProgress(toolkit::ProgressBar& bar, std::string_view name)
    : bar_(bar), name_(name) {
    bar_.showBusy(name_ + " …");
}

bool TransferProgress::isDue() {
    now_ = toolkit::now();
    return samples_.empty() || now_ - samples_.back().time >= shortestPause;
}

void TransferProgress::received(std::uint64_t bytes, std::optional<std::uint64_t> announced) {
    note(bytes);
    if (announced && bytes <= *announced)
        show(bytes, *announced);
    else
        bar_.showBusy(name_ + ' ' + amount(bytes, {}));
}

void TransferProgress::note(std::uint64_t bytes) {
    if (!first_) first_ = now_;
    samples_.push_back({now_, bytes});
    while (now_ - samples_.front().time > remembered)
        samples_.pop_front();
}

void TransferProgress::show(std::uint64_t bytes, std::uint64_t length) {
    const double share = static_cast<double>(bytes) / static_cast<double>(length);
    std::string figures = amount(bytes, length);
    if (const auto left = timeLeft(length - bytes)) figures += ", noch etwa " + roughly(*left);
    const std::string percent = std::to_string(static_cast<int>(share * 100)) + " %";
    bar_.showShare(share, name_ + ' ' + percent + " (" + figures + ')');
}

/// How long that many bytes will take; no value while nobody could say.
std::optional<seconds> TransferProgress::timeLeft(std::uint64_t bytes) const {
    const Sample& to = samples_.back();
    const auto from = std::find_if(samples_.begin(), samples_.end(), [this](const Sample& sample) {
        return sample.time - *first_ >= fromBuffers;
    });
    if (bytes == 0 || from == samples_.end()) return {};
    const std::chrono::duration<double> span = to.time - from->time;
    if (span < shortestMeasure || to.bytes == from->bytes) return {};
    const double left =
        span.count() * static_cast<double>(bytes) / static_cast<double>(to.bytes - from->bytes);
    constexpr double longest = 24.0 * 60 * 60;
    if (left > longest) return {};
    return seconds(static_cast<seconds::rep>(left) + 1);
}

} // namespace online
