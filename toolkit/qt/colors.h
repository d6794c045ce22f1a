#pragma once

#include "toolkit/contrast.h"

#include <QColor>

namespace toolkit::qt {

inline Color toColor(const QColor& color) {
    const auto channel = [](int value) { return static_cast<std::uint8_t>(value); };
    return {channel(color.red()), channel(color.green()), channel(color.blue())};
}

inline QColor toQt(Color color) {
    return {color.red, color.green, color.blue};
}

} // namespace toolkit::qt
