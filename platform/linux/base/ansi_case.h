// Capital letters of Windows-1252, by which Windows compares the names of profiles and of the registry.
#pragma once

#include <string>
#include <string_view>

namespace platform::linux {

/// The text in capitals; letters without one stay as they are.
std::string ansiUpper(std::string_view text);

/// Whether two texts differ in case at the most.
bool isSameAnsi(std::string_view a, std::string_view b);

} // namespace platform::linux
