// The drive table for other programs.
#pragma once

#include <map>
#include <string>

namespace platform::posix {

/// A folder "orvanta-usbtool" in the user's runtime directory with a link for each drive, `e:`, that leads to
/// its device node or folder. Without a runtime directory there is none.
class DriveLinks {
public:
    using Targets = std::map<char, std::string>; ///< by letter, upper case

    void show(const Targets& targets);
    void remove();

private:
    Targets shown_;
};

} // namespace platform::posix
