// What is said of a download while it runs.
#pragma once

#include "toolkit/progress_bar.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

namespace online {

/// "11,8 von 40,0 MB", or "11,8 MB" where nothing was announced; "2,0 von 19,5 KB" of less than a megabyte.
/// Of 1024 times 1024 and of 1024 bytes, with one digit behind the user's separator.
std::string amount(std::uint64_t bytes, std::optional<std::uint64_t> announced);

/// How far a download has come, and how long it will take, in a progress bar. It is asked after every read,
/// and shows something ten times a second at the most.
class TransferProgress {
public:
    /// `name` is what is fetched, as the user knows it. The bar shows at once that something is done.
    TransferProgress(toolkit::ProgressBar& bar, std::string_view name);

    /// Whether it is time to show something; to be asked after every read.
    bool isDue();

    /// So much of the file has come; `announced` is its length as the server has it. A length that is less
    /// than what came counts as none. To be called when it is time.
    void received(std::uint64_t bytes, std::optional<std::uint64_t> announced);

private:
    using Time = std::chrono::steady_clock::time_point;

    /// How much had come by then.
    struct Sample {
        Time time;
        std::uint64_t bytes;
    };

    void note(std::uint64_t bytes);
    void show(std::uint64_t bytes, std::uint64_t length);
    std::optional<std::chrono::seconds> timeLeft(std::uint64_t bytes) const;

    toolkit::ProgressBar& bar_;
    std::string name_;
    std::deque<Sample> samples_; ///< of the last seconds
    std::optional<Time> first_;  ///< when the first bytes came
    Time now_;
};

} // namespace online
