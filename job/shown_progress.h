// What the main window's progress bar says of a job.
#pragma once

#include "online/download.h"
#include "window/main_window.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace job {

/// The bar from the first question to the server to the job's result. It is empty when the job ends without
/// one, however that comes.
class ShownProgress {
public:
    explicit ShownProgress(window::MainWindow& window);
    ShownProgress(const ShownProgress&) = delete;
    ShownProgress& operator=(const ShownProgress&) = delete;
    ~ShownProgress();

    /// A file has been received; `name` is what it is to the user. One that did not come whole is warned of.
    void received(std::string_view name, const online::Received& file);
    void writing();
    void verifying();

    /// The result stands in the bar's place from here on: so many files are on the stick, or a warning.
    void finish(std::size_t files);
    /// Has a warning spoken.
    void alert();

    /// What the bar says of the result.
    const std::string& result() const noexcept { return window_.prgUpdate.text(); }

private:
    window::MainWindow& window_;
    std::string incomplete_; ///< what did not come whole, and how much of it did
    bool finished_ = false;
};

} // namespace job
