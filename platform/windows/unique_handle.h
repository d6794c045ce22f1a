#pragma once

#include <windows.h>

#include <utility>

namespace platform::windows {

/// A kernel object's handle, closed when this object goes.
class UniqueHandle {
public:
    UniqueHandle() = default;
    /// Both of Windows' values for "no handle" are taken as such.
    explicit UniqueHandle(HANDLE handle) : handle_(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
    UniqueHandle(UniqueHandle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    UniqueHandle& operator=(UniqueHandle&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    UniqueHandle(const UniqueHandle&) = delete;
    UniqueHandle& operator=(const UniqueHandle&) = delete;
    ~UniqueHandle() { close(); }

    explicit operator bool() const { return handle_ != nullptr; }
    HANDLE get() const { return handle_; }

    /// False when the system reports a failure, such as data it could not write.
    bool close() {
        const HANDLE handle = std::exchange(handle_, nullptr);
        return handle == nullptr || CloseHandle(handle) != FALSE;
    }

private:
    HANDLE handle_ = nullptr;
};

} // namespace platform::windows
