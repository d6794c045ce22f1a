// Reading, writing and syncing what is open.
#pragma once

#include "platform/files.h"
#include "platform/linux/base/unique_fd.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace platform::linux {

/// Reads up to `size` bytes; a count of 0 is the end of the file.
FileResult readSome(int file, char* buffer, std::size_t size, std::size_t& count);

/// Appends what the file still holds to the bytes, in steps, until they are `most` at the least.
FileResult readAll(int file, std::string& bytes, std::size_t most = std::string::npos);

/// Writes all of it; on a failure what has been written stays.
FileResult writeAll(int file, std::string_view bytes);

/// Brings a file onto its medium.
FileResult syncFile(int file);

/// Brings a file onto its medium and closes it.
FileResult syncAndClose(UniqueFd& file);

/// Brings the names in a folder (which may be opened with O_PATH) onto their medium.
FileResult syncFolder(int folder);

} // namespace platform::linux
