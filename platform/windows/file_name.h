#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform::windows {

/// One name of a path as it is looked up, in the ANSI code page: dots and blanks at its end do not count. No
/// value for a name that no file can have, or that stands for something else than a file: an empty one, one
/// that is not UTF-8 or has a character without a place in the code page, one with a control character or one
/// of `<>:"/\|?*`, a device name (`NUL`, also with an extension), or one of dots and blanks alone ("." and
/// ".." are for the caller to treat before).
std::optional<std::string> usableName(std::string_view name);

} // namespace platform::windows
