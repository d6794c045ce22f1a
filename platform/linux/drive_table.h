// The drive letters of a system that has none: which volume each letter stands for.
#pragma once

#include <optional>
#include <string>

namespace platform::posix {

class DriveSource;

/// Folder that the drive's root stands for, absolute, without a slash at the end (except "/"). Mounts the
/// volume when it is not mounted yet. No value when there is no such drive, no medium, or it cannot be
/// mounted. `letter` is matched regardless of case.
std::optional<std::string> driveFolder(char letter);

/// Where the table comes from at this moment.
DriveSource& driveSource();

/// Shows the table to programs that are started with a drive letter: a link for each drive (`e:`) in a folder
/// below the user's runtime directory. Costs nothing as long as the table stays the same.
void mirrorDriveTable();

/// Unmounts what the table mounted and takes the links away.
void releaseDriveTable();

} // namespace platform::posix
