// The label of a FAT file system that is not mounted, written by the program itself: the tool that UDisks2
// calls for it refuses every letter that is not in ASCII.
#pragma once

#include <string>
#include <string_view>

namespace platform::linux {

enum class FatLabel { Done, Refused, Failed };

/// Gives the file system on an open block device or image another label, UTF-8, in capitals as FAT keeps it.
/// Where Windows looks, in the root directory, and in the boot sector and its copy, as the tools of Linux do;
/// it is on the medium when this returns. Refused: an empty label, one with a character that code page 850
/// does not have or FAT does not allow, or with more than 11 of them. Failed: the device cannot be read or
/// written, holds no FAT file system, or has no room for another entry in its root directory; a damaged one
/// is left alone.
/// https://download.microsoft.com/download/1/6/1/161ba512-40e2-4cc9-843a-923143f3456c/fatgen103.doc
FatLabel writeFatLabel(int device, std::string_view label);

} // namespace platform::linux
