// Messages of the common controls carry addresses, which have to be the program's own.
#pragma once

#include <windows.h>

#include <cstddef>
#include <string>

namespace probe {

/// A piece of memory of the process that a window belongs to; it goes with this object.
class RemoteMemory {
public:
    RemoteMemory(HWND window, std::size_t size);
    RemoteMemory(const RemoteMemory&) = delete;
    RemoteMemory& operator=(const RemoteMemory&) = delete;
    ~RemoteMemory();

    LPARAM address(std::size_t offset = 0) const;
    void write(const void* data, std::size_t size, std::size_t offset = 0);
    void read(void* data, std::size_t size, std::size_t offset = 0) const;
    /// Up to the first NUL.
    std::wstring text(std::size_t offset, std::size_t characters) const;

private:
    HANDLE process_ = nullptr;
    std::byte* memory_ = nullptr;
};

} // namespace probe
