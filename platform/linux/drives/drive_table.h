// The drive letters of a system that has none: which volume each letter stands for.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace platform::linux {

class DriveSource;

/// Letter of a drive root (`E:\` or `E:`; what follows the first NUL does not count), in upper case; 0 when
/// it is none.
char driveLetter(std::string_view root);

/// Folder that the drive's root stands for, absolute, without a slash at the end (except "/"). Mounts the
/// volume when it is not mounted yet. No value when there is no such drive, no medium, or it cannot be
/// mounted. `letter` is matched regardless of case.
std::optional<std::string> driveFolder(char letter);

/// Where the table comes from at this moment.
DriveSource& driveSource();

/// Shows the table to programs that are started with a drive letter: a link for each drive (`e:`) in a folder
/// below the user's runtime directory. Sets right what somebody changed; a few system calls when nothing did.
void mirrorDriveTable();

/// Asks anew what drives there are.
void listDrives();

/// Asks anew what the drive is that has this letter.
void listToIdentify(char letter);

/// While it exists, the first listDrives() takes the list that has just been made: whoever is told of a new
/// drive lists them all before anything else. The first listToIdentify() takes it as well, while it is young
/// and the disk is the same: what is about to be shown comes from that list, and the service, which has just
/// been told to mount the drive, takes long to make another.
class ListAtHand {
public:
    ListAtHand();
    ListAtHand(const ListAtHand&) = delete;
    ListAtHand& operator=(const ListAtHand&) = delete;
    ~ListAtHand();
};

/// Somebody was told these letters, and may act on it.
void drivesListed(const std::string& letters);

/// Somebody found a drive empty or gone, and may act on it. `drives` is where it was looked for: read anew,
/// the table may have the drive back already.
void driveMissed(DriveSource& drives);

/// Calls the listener with the letters there are at every drivesListed() and driveMissed(); an empty one is
/// nobody.
void onDrivesListed(std::function<void(const std::string& letters)> listener);

/// Unmounts what the table mounted and takes the links away.
void releaseDriveTable();

} // namespace platform::linux
