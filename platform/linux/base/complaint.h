// What the user of a terminal, or whoever reads the session's log, is told.
#pragma once

#include <string>
#include <string_view>

namespace platform::linux {

/// One complaint that may come up again and again, and is told once until it is another one. It goes to the
/// standard error output as one line.
class Complaint {
public:
    /// Tells it, unless it is what was told last. An empty text is told to nobody: all is well again.
    void tell(std::string_view text);

private:
    std::string last_;
};

} // namespace platform::linux
