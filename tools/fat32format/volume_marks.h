// What the first sector of a volume tells of what the volume holds.
#pragma once

#include <span>
#include <string>

namespace fat32format {

/// Whether the volume is encrypted with BitLocker, as a fixed disk or "to go". The sector is the one on the
/// disk itself: a volume that has been unlocked shows another one.
/// https://learn.microsoft.com/windows/win32/secprov/win32-encryptablevolume
bool isBitLocker(std::span<const unsigned char> sector);

/// Name of the file system; empty when it is none of those that Windows makes.
std::string fileSystemName(std::span<const unsigned char> sector);

} // namespace fat32format
