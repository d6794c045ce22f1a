// Leads the paths of the program (files.h) to files of this system.
//
// A path begins with a drive (`E:\`, `E:/`, or `E:` alone) or with one of the program's own folders
// (programFolder(), settingsFolder()) in native form; names follow, separated by `\` or `/`. "." and ".." are
// taken out first, as DOS does; ".." stops at the root. Dots and blanks at the end of a name do not count. A
// relative path, or any other absolute one, leads nowhere.
#pragma once

#include "platform/files.h"
#include "platform/linux/base/unique_fd.h"

#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>

namespace platform::linux {

/// Where a path leads: an open folder, and one name in it.
struct Place {
    UniqueFd folder;        ///< opened with O_PATH
    std::string folderPath; ///< the same folder as an absolute path; ends in a slash
    std::string name; ///< as it stands in the folder, else as asked for; "." when the path is a root itself
    std::optional<struct stat> info; ///< no value when there is no such file or folder
    bool isRoot = false;
    bool followsLinks = false;  ///< in the program's own folders; on a drive a link is no file at all
    bool asksForFolder = false; ///< the path ended in a separator

    bool isFolder() const { return info && S_ISDIR(info->st_mode); }
    /// A plain file that the path may mean.
    bool isFile() const { return info && S_ISREG(info->st_mode) && !asksForFolder; }
};

/// Finds the folder that a path leads to and looks the last name up: the very name first, then one that
/// differs in case. Ok also when the last name does not exist.
///
/// Each folder is opened from the one before it without following links (on a drive), so that no link on a
/// stick leads out of it, not even one that is put there at this moment. With a drive given, the root folder
/// that has been opened must be that drive's, else the result is DiskNotReady.
FileResult locate(std::string_view path, Place& place, const DriveIdentity& drive = {});

/// Absolute path of a file or folder that exists; no value when it does not.
std::optional<std::string> nativePath(std::string_view path);

} // namespace platform::linux
