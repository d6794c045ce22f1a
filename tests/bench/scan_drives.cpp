// Milliseconds that one look at every drive takes, as the scan for sticks has it; the median of several.

#include "platform/volumes.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace {

std::size_t scan() {
    std::array<char, 64> buffer{};
    const std::uint32_t length = platform::logicalDriveStrings(buffer);
    std::string_view rest(buffer.data(), length);
    std::size_t measured = 0;
    for (std::size_t end = rest.find('\0'); end != std::string_view::npos; end = rest.find('\0')) {
        const std::string root(rest.substr(0, end));
        platform::DiskFreeSpace space;
        if (platform::driveType(root) == platform::DriveRemovable && platform::diskFreeSpace(root, space))
            ++measured;
        rest.remove_prefix(end + 1);
    }
    return measured;
}

} // namespace

int main() {
    std::vector<double> times;
    std::size_t measured = 0;
    for (int i = 0; i < 21; ++i) {
        const auto started = std::chrono::steady_clock::now();
        measured = scan();
        const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - started;
        times.push_back(taken.count());
    }
    std::sort(times.begin(), times.end());
    std::printf("%zu %.4f %.4f\n", measured, times[times.size() / 2], times.back());
}
