#pragma once

#include "platform/volumes.h"

#include <string>

namespace format {

/// What a person knows the disk by, in one line: `WD Elements 25A2, 465,8 GB, Bezeichnung "BACKUP"`. What is
/// not known is left out.
std::string diskText(const platform::DiskDescription& disk);

} // namespace format
