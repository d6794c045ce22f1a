#pragma once

#include "platform/linux/base/unique_fd.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>

namespace platform::linux {

/// Reads the names in a folder, in the order of the file system. A folder that cannot be read has none.
class FolderReader {
public:
    FolderReader() = default;
    /// `folder` may be opened with O_PATH and stays open.
    explicit FolderReader(int folder) {
        UniqueFd readable(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (readable) stream_.reset(fdopendir(readable.get()));
        if (stream_)
            static_cast<void>(readable.release());
        else
            error_ = errno;
    }

    bool readable() const { return stream_ != nullptr; }

    /// Why there may be more names than next() has given; 0 when there are none.
    int error() const { return error_; }

    /// The next name, valid until the next call, or a null pointer.
    const char* next() {
        if (!stream_) return nullptr;
        errno = 0;
        const dirent* entry = readdir(stream_.get()); // NOLINT(concurrency-mt-unsafe): a stream of its own
        if (entry == nullptr) error_ = errno;
        return entry != nullptr ? entry->d_name : nullptr;
    }

private:
    struct Close {
        void operator()(DIR* stream) const noexcept { closedir(stream); }
    };
    std::unique_ptr<DIR, Close> stream_;
    int error_ = 0;
};

} // namespace platform::linux
