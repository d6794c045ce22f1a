#include "platform/windows/file_name.h"

#include "base/letters.h"
#include "platform/windows/ansi_text.h"

#include <algorithm>
#include <array>

namespace platform::windows {

namespace {

constexpr std::size_t longestName = 255;

bool forbidden(char character) {
    const auto c = static_cast<unsigned char>(character);
    return c < 0x20 || c == 0x7F || std::string_view("<>:\"/\\|?*").find(character) != std::string_view::npos;
}

std::string_view withoutTrailing(std::string_view text, std::string_view characters) {
    return text.substr(0, text.find_last_not_of(characters) + 1);
}

/// `NUL` and its like stand for devices whatever the extension.
/// https://learn.microsoft.com/windows/win32/fileio/naming-a-file#naming-conventions
bool isDevice(std::string_view name) {
    static constexpr std::array<std::string_view, 6> devices = {"CON", "PRN",    "AUX",
                                                                "NUL", "CONIN$", "CONOUT$"};
    static constexpr std::array<std::string_view, 2> ports = {"COM", "LPT"};
    static constexpr std::array<std::string_view, 12> numbers = {"1", "2", "3", "4", "5", "6",
                                                                 "7", "8", "9", "¹", "²", "³"};
    const std::string stem = base::upper(withoutTrailing(name.substr(0, name.find('.')), " "));
    if (std::find(devices.begin(), devices.end(), stem) != devices.end()) return true;
    return std::find(ports.begin(), ports.end(), stem.substr(0, 3)) != ports.end() &&
           std::find(numbers.begin(), numbers.end(), stem.substr(3)) != numbers.end();
}

} // namespace

std::optional<std::string> usableName(std::string_view name) {
    const std::string_view usable = withoutTrailing(name, ". ");
    if (usable.empty() || isDevice(usable)) return std::nullopt;
    if (std::any_of(name.begin(), name.end(), forbidden)) return std::nullopt;
    auto ansi = exactAnsi(usable);
    if (!ansi || ansi->size() > longestName) return std::nullopt;
    return ansi;
}

} // namespace platform::windows
