#pragma once

#include "build_choices.h"

#include <string>

namespace unit {

inline const std::string title = "Orvanta USB-Stick Internetupdate Tool " + std::string(base::programVersion);

} // namespace unit
