// Which disk a drive is on, for programs that are told no more than the drive's letter.
#pragma once

#include "platform/linux/drives/volume_folder.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace platform::linux {

/// The disk of a block device, a whole disk or a partition: "sequence=7,size=500107862016,serial=WD%2F1".
/// The sequence is diskSequence(); the size is that of the whole disk, in bytes; in the serial number (UTF-8,
/// may be empty) whatever is no letter, digit, "-", "." or "_" stands as "%" and two hexadecimal digits a
/// byte. Empty when the kernel does not tell sequence or size.
std::string diskNote(std::uint64_t deviceNumber, std::string_view serial,
                     const std::string& devices = deviceFolder);

} // namespace platform::linux
