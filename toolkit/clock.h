#pragma once

#include <chrono>

namespace toolkit {

/// How late it is; it never gets earlier. Tests have a clock of their own.
std::chrono::steady_clock::time_point now();

} // namespace toolkit
