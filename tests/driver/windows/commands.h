#pragma once

#include "tests/driver/windows/request.h"

#include <string>

namespace probe {

/// Carries out one request and returns the reply, a JSON object. Throws Failure when it cannot be carried
/// out.
std::string perform(const Request& request);

} // namespace probe
