#include "tests/conformance/picture_pixels.h"

#include "toolkit/win32/picture.h"

namespace conformance {

struct PictureDrawing::State {};

PictureDrawing::PictureDrawing() = default;
PictureDrawing::~PictureDrawing() = default;

PictureSize sizeOf(const base::Picture& picture) {
    const toolkit::win32::Bitmap& bitmap = *toolkit::win32::loaded(picture)->bitmap();
    return {bitmap.width(), bitmap.height()};
}

toolkit::Color pixelOf(const base::Picture& picture, int x, int y) {
    const toolkit::win32::Bitmap& bitmap = *toolkit::win32::loaded(picture)->bitmap();
    const std::uint32_t pixel = bitmap.pixels()[static_cast<std::size_t>(y * bitmap.width() + x)];
    return {static_cast<std::uint8_t>(pixel >> 16 & 0xFF), static_cast<std::uint8_t>(pixel >> 8 & 0xFF),
            static_cast<std::uint8_t>(pixel & 0xFF)};
}

/// `clock` would tell the time of the wall here.
double processorSeconds() {
    FILETIME created{};
    FILETIME ended{};
    FILETIME kernel{};
    FILETIME user{};
    GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &user);
    const auto seconds = [](const FILETIME& time) {
        return (static_cast<double>(time.dwHighDateTime) * 4294967296.0 + time.dwLowDateTime) / 1e7;
    };
    return seconds(kernel) + seconds(user);
}

} // namespace conformance
