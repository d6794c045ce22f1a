#pragma once

#include <string>

namespace platform::windows {

/// What tells the volume that has this letter from every other one, see drive_identity.h; empty without a
/// medium.
std::string volumeIdentity(char letter);

} // namespace platform::windows
