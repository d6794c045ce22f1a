#pragma once

#include "build_choices.h"

#include <string_view>

namespace window {

constexpr std::string_view programTitle = "Orvanta USB-Stick Internetupdate Tool ";

/// The program's version, which stands behind its title; the server names the one that is current.
constexpr std::string_view programVersion = base::programVersion;

} // namespace window
