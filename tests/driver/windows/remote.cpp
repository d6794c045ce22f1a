#include "tests/driver/windows/remote.h"

#include "tests/driver/windows/request.h"

#include <algorithm>

namespace probe {

RemoteMemory::RemoteMemory(HWND window, std::size_t size) {
    DWORD id = 0;
    GetWindowThreadProcessId(window, &id);
    process_ = OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE, id);
    memory_ = static_cast<std::byte*>(
        VirtualAllocEx(process_, nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
    if (memory_ != nullptr) return;
    CloseHandle(process_);
    throw Failure("the program is gone");
}

RemoteMemory::~RemoteMemory() {
    VirtualFreeEx(process_, memory_, 0, MEM_RELEASE);
    CloseHandle(process_);
}

LPARAM RemoteMemory::address(std::size_t offset) const {
    return reinterpret_cast<LPARAM>(memory_ + offset);
}

void RemoteMemory::write(const void* data, std::size_t size, std::size_t offset) {
    if (WriteProcessMemory(process_, memory_ + offset, data, size, nullptr) == FALSE)
        throw Failure("the program is gone");
}

void RemoteMemory::read(void* data, std::size_t size, std::size_t offset) const {
    if (ReadProcessMemory(process_, memory_ + offset, data, size, nullptr) == FALSE)
        throw Failure("the program is gone");
}

std::wstring RemoteMemory::text(std::size_t offset, std::size_t characters) const {
    std::wstring text(characters, L'\0');
    read(text.data(), characters * sizeof(wchar_t), offset);
    text.resize(std::min(text.find(L'\0'), characters));
    return text;
}

} // namespace probe
