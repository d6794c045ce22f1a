// Leads the paths of the program (files.h) to what the ANSI functions may be told.
//
// A path begins with a drive (`E:\`, `E:/`, or `E:` alone) or with one of the program's own folders
// (programFolder(), settingsFolder()); names follow, separated by `\` or `/`. "." and ".." are taken out
// first; ".." stops at that root. Windows itself would let names leave the folder, mean devices or streams of
// other files: none of that gets past here. A relative path leads nowhere.
#pragma once

#include "platform/files.h"

#include <string>
#include <string_view>

namespace platform::windows {

/// Where a path leads.
struct Place {
    std::string root;   ///< ANSI code page, ends in `\`
    std::string native; ///< full path in the ANSI code page; ends in `\` when it is the root itself
    bool isRoot = false;
    bool isOnDrive = false;       ///< not in one of the program's own folders
    bool asksForFolder = false;   ///< the path ended in a separator
    unsigned long attributes = 0; ///< all bits set when there is no such file or folder

    bool exists() const;
    bool isFolder() const;
    bool isReadOnly() const;
    /// A file that the path may mean.
    bool isFile() const { return exists() && !isFolder() && !asksForFolder; }
};

/// Finds what a path means. Ok also when the last name does not exist in a folder that does.
FileResult locate(std::string_view path, Place& place);

/// Whether the name may stand for a file that is to be read or written: Ok also when there is none yet.
FileResult checkIsFile(const Place& place);

} // namespace platform::windows
