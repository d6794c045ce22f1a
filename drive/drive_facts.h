#pragma once

#include <string>

class cDrive;

namespace drive {

/// Size and file system of the drive whose label was read last, as people tell sticks apart by: "Größe: 3,73
/// GB, Dateisystem: FAT32". What is not known is left out.
std::string factsOf(cDrive& drive, const std::string& root);

} // namespace drive
