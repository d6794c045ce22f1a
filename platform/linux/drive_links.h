// The drive table for other programs.
#pragma once

#include <map>
#include <string>

namespace platform::posix {

/// A folder "orvanta-usbtool/<process id>" in the user's runtime directory with a link for each drive, `e:`,
/// that leads to its device node or folder. Each program has letters of its own, hence the process id.
/// Without a runtime directory there is none.
class DriveLinks {
public:
    using Targets = std::map<char, std::string>; ///< by letter, upper case

    /// Makes the links those of the table, whatever was there before.
    void show(const Targets& targets);
    void remove();

private:
    bool shown_ = false;
};

} // namespace platform::posix
