#pragma once

#include <string_view>

namespace probe {

/// The identifier of a name, also of a menu item; 0 when nothing bears it.
int identifierOf(std::string_view name);

/// The name of an identifier; empty when there is none.
std::string_view nameOf(int identifier);

} // namespace probe
