#pragma once

#include <cstdint>

namespace toolkit {

/// A colour of 8 bits a channel, without transparency.
struct Color {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    friend bool operator==(const Color&, const Color&) = default;
};

constexpr Color black{0, 0, 0};
constexpr Color white{255, 255, 255};

} // namespace toolkit
