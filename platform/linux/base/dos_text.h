// Text as DOS has it, whose code page in German is 850: the labels of FAT file systems are in it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform::linux {

/// UTF-8 to code page 850. No value when a character has no byte there.
std::optional<std::string> toDos(std::string_view text);

/// Code page 850 to UTF-8.
std::string fromDos(std::string_view bytes);

/// The text in capitals, as FAT keeps names; UTF-8. Only the letters that code page 850 has in both sizes
/// change.
std::string dosCapitals(std::string_view text);

} // namespace platform::linux
