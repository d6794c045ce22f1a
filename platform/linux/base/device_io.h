// Reading and writing a device in the middle.
#pragma once

#include <cstdint>
#include <span>

namespace platform::linux {

/// All of the bytes, or false.
bool readAt(int device, std::uint64_t offset, std::span<std::uint8_t> bytes);
bool writeAt(int device, std::uint64_t offset, std::span<const std::uint8_t> bytes);

} // namespace platform::linux
