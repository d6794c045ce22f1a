// One name of a path: what Windows would accept, and which names are the same to it.
#pragma once

#include <optional>
#include <string_view>

namespace platform::linux {

/// The name as it is looked up: dots and blanks at its end do not count. No value for a name that no file can
/// have: an empty one, one that is not UTF-8, one with a control character or one of `<>:"/\|?*`, a device
/// name (`NUL`, also with an extension), or one of dots and blanks alone ("." and ".." are for the caller to
/// treat before).
std::optional<std::string_view> usableName(std::string_view name);

/// True when two names differ in case at most. Bytes that are not UTF-8 match themselves.
bool sameName(std::string_view a, std::string_view b);

} // namespace platform::linux
