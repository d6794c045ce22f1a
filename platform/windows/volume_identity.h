#pragma once

#include <string>

namespace platform::windows {

/// What tells the volume that has this letter from every other one, see drive_identity.h; empty without a
/// medium. With a file or folder of it open, the volume's own number is asked of that and not of the letter.
std::string volumeIdentity(char letter, void* open = nullptr);

} // namespace platform::windows
