#pragma once

#include <cerrno>
#include <unistd.h>
#include <utility>

namespace platform::linux {

/// Owns a file descriptor.
class UniqueFd {
public:
    UniqueFd() noexcept = default;
    explicit UniqueFd(int fd) noexcept : fd_(fd) {}
    UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        if (this != &other) {
            close();
            fd_ = std::exchange(other.fd_, -1);
        }
        return *this;
    }
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;
    ~UniqueFd() { close(); }

    explicit operator bool() const noexcept { return fd_ >= 0; }
    int get() const noexcept { return fd_; }
    int release() noexcept { return std::exchange(fd_, -1); }

    /// Closes it; returns 0 or the error number. Linux has closed it even when a signal came in between.
    int close() noexcept {
        if (fd_ < 0) return 0;
        const int result = ::close(std::exchange(fd_, -1));
        return result == 0 || errno == EINTR ? 0 : errno;
    }

private:
    int fd_ = -1;
};

} // namespace platform::linux
