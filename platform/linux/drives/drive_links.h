// The drive table for other programs.
#pragma once

#include "platform/linux/base/complaint.h"

#include <map>
#include <string>

namespace platform::linux {

/// A folder "orvanta-usbtool/<process id>" in the user's runtime directory with a link for each drive, `e:`,
/// that leads to its device node or folder. Beside it the text of a second link, `e:.disk`, tells which disk
/// is meant, as diskNote() has it. Each program has letters of its own, hence the process id.
///
/// Without a runtime directory there is none, nor in one of another user, nor when one of the folders is a
/// link or not the user's alone: then a line on the error output tells why. Nothing is removed but
/// links with such names and folders that are empty then.
class DriveLinks {
public:
    struct Target {
        std::string path;
        std::string disk = {}; ///< empty where it cannot be told
        bool operator==(const Target&) const = default;
    };
    using Targets = std::map<char, Target>; ///< by letter, upper case

    /// Makes the links those of the table, whatever was there before.
    void show(const Targets& targets);
    void remove();

private:
    /// Returns why there are none; empty when there is nothing to tell.
    std::string tryToShow(const Targets& targets);

    bool shown_ = false;
    Complaint complaint_;
};

} // namespace platform::linux
