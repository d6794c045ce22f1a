#include "tools/fat32format/size_text.h"

#include <array>

namespace fat32format {

std::string sizeText(std::uint64_t bytes) {
    constexpr std::array<const char*, 5> units = {"kB", "MB", "GB", "TB", "PB"};
    std::uint64_t tenths = bytes / 100; // of a kilobyte
    std::size_t unit = 0;
    while (tenths >= 10'000 && unit + 1 < units.size()) {
        tenths /= 1000;
        ++unit;
    }
    return std::to_string(tenths / 10) + '.' + std::to_string(tenths % 10) + ' ' + units.at(unit);
}

} // namespace fat32format
