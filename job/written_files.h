// What a job has put onto the stick, or found there, and whether it is there.
#pragma once

#include "platform/drive_identity.h"

#include <string>
#include <vector>

namespace job {

/// The files of one job, in its order.
class WrittenFiles {
public:
    /// What is added has been written, or its medium has been found to hold it already.
    void add(std::string path, std::string contents, bool written);

    /// Reads the files back from their medium: all of them, but for those that were found there and that no
    /// write has come after, which may spoil what is there on a bad medium. Throws base::RuntimeError with
    /// the path: DeviceIo for a file that is not what was written, DiskNotReady when the path leads to
    /// another drive than the given one.
    void verify(const platform::DriveIdentity& drive) const;

    std::size_t count() const noexcept { return files_.size(); }

private:
    struct File {
        std::string path;
        std::string contents;
        bool isKnown; ///< to be on the medium
    };

    std::vector<File> files_;
};

} // namespace job
