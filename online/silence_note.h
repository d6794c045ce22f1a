// A word to who waits for a server that says nothing.
#pragma once

#include "platform/http.h"
#include "toolkit/progress_bar.h"
#include "toolkit/wait.h"

#include <string>

namespace online {

/// While a request is waited for, the bar tells after 5 seconds without a byte how long it will still be;
/// when something comes it is as it was.
class SilenceNote {
public:
    SilenceNote(toolkit::ProgressBar& bar, const platform::InternetRequest& request);
    SilenceNote(const SilenceNote&) = delete;
    SilenceNote& operator=(const SilenceNote&) = delete;
    ~SilenceNote() { withdraw(); }

    /// The wait is over.
    void withdraw();

private:
    void look();

    toolkit::ProgressBar& bar_;
    const platform::InternetRequest& request_;
    toolkit::WaitObserver observer_;
    std::string before_; ///< what the bar said
    bool alone_ = false; ///< it had said nothing
    bool shown_ = false;
};

} // namespace online
