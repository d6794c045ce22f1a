#pragma once

#include <string_view>

namespace online {

/// Whether a name that the catalog gives a file may be written to the stick's root: it names no folder, drive
/// or stream, and none of the files that the program keeps there itself, under whatever spelling a FAT or
/// NTFS volume takes for one of them. Whether a file can have the name at all is another matter.
bool isFileNameForStick(std::string_view name);

} // namespace online
