#pragma once

#include <windows.h>

#include <cstdint>

namespace fat32format::test {

/// A number for a standard file that means nothing in a process at its start.
inline const HANDLE staleOutput = reinterpret_cast<HANDLE>(std::uintptr_t{0x200});

} // namespace fat32format::test
