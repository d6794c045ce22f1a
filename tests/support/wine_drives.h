// Drives made out of folders: Wine's mount manager takes them, as winecfg hands them over, at any time.
#pragma once

#include <windows.h>

#include <string>

namespace wine {

/// Makes a folder of the host a drive of a type (DRIVE_REMOVABLE and so on). Throws std::runtime_error.
void defineDrive(char letter, ULONG type, const std::string& hostFolder);

void undefineDrive(char letter);

} // namespace wine
