// Numbers as bytes, the lowest one first. `Bytes` is anything with an index and a size whose elements are
// bytes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace base {

/// The number in the `size` bytes (up to 8) from index `at` on. A byte beyond the end counts as 0.
template <typename Bytes>
constexpr std::uint64_t littleEndian(const Bytes& bytes, std::size_t at, std::size_t size) {
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < size && at + i < bytes.size(); ++i)
        number |= std::uint64_t{static_cast<std::uint8_t>(bytes[at + i])} << (8 * i);
    return number;
}

/// Stores the lowest `size` bytes of a number from index `at` on, which have to be there.
template <typename Bytes>
constexpr void putLittleEndian(Bytes& bytes, std::size_t at, std::size_t size, std::uint64_t number) {
    for (std::size_t i = 0; i < size; ++i)
        bytes[at + i] = static_cast<typename Bytes::value_type>(number >> (8 * i) & 0xFF);
}

} // namespace base
