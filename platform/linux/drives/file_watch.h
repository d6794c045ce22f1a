#pragma once

#include "platform/linux/base/unique_fd.h"

#include <string>

namespace platform::linux {

/// Notices that a file of a folder has been written, replaced or removed, and that it has come to be.
class FileWatch {
public:
    FileWatch(const std::string& folder, std::string name);

    /// Readable when something happened in the folder; -1 when it cannot be watched.
    int descriptor() const noexcept { return events_.get(); }
    /// Takes what has happened so far; true when it was about the file.
    bool takeChange();

private:
    UniqueFd events_;
    std::string name_;
};

} // namespace platform::linux
