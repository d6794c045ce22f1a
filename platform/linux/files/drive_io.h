// Reading, writing and syncing what is open on a drive, which may be slow: each waits as platform/blocking.h
// says. The numbers of files may be closed by whoever gives up waiting.
#pragma once

#include "platform/files.h"
#include "platform/linux/base/unique_fd.h"

#include <string>
#include <string_view>

namespace platform::linux {

/// Appends what the file still holds.
FileResult readFromDrive(int file, std::string& bytes);

/// Writes all of it, and sees that little of it waits in memory: a write that is given up leaves a drive that
/// can soon be unmounted. On a failure what has been written stays.
FileResult writeToDrive(int file, std::string_view bytes);

/// Compares all of a file as its medium has it; DeviceIo when that is anything else.
FileResult compareOnDrive(int file, std::string_view bytes);

/// Empties a file.
FileResult emptyOnDrive(int file);

/// Brings a file onto its medium.
FileResult syncOnDrive(int file);

/// Brings a file onto its medium and closes it.
FileResult syncAndCloseOnDrive(UniqueFd& file);

/// Brings the names in a folder (which may be opened with O_PATH) onto their medium.
FileResult syncFolderOnDrive(int folder);

} // namespace platform::linux
