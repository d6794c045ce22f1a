#include "toolkit/contrast.h"

#include <algorithm>
#include <cmath>

namespace toolkit {

namespace {

constexpr double brightest = 255;

double linear(std::uint8_t channel) {
    const double share = channel / brightest;
    return share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
}

double luminance(Color color) {
    return 0.2126 * linear(color.red) + 0.7152 * linear(color.green) + 0.0722 * linear(color.blue);
}

Color mixed(Color one, Color other, double share) {
    const auto channel = [share](std::uint8_t a, std::uint8_t b) {
        return static_cast<std::uint8_t>(std::lround(a + (b - a) * share));
    };
    return {channel(one.red, other.red), channel(one.green, other.green), channel(one.blue, other.blue)};
}

} // namespace

double contrast(Color one, Color other) {
    const auto [dark, light] = std::minmax({luminance(one), luminance(other)});
    return (light + 0.05) / (dark + 0.05);
}

Color readable(Color color, Color strong, std::initializer_list<Color> grounds, double least) {
    constexpr int steps = 20;
    for (int step = 0; step < steps; ++step) {
        const Color candidate = mixed(color, strong, static_cast<double>(step) / steps);
        if (std::all_of(grounds.begin(), grounds.end(),
                        [&](Color ground) { return contrast(candidate, ground) >= least; }))
            return candidate;
    }
    return strong;
}

} // namespace toolkit
