// Leads the paths of the program (files.h) to what the ANSI functions may be told.
//
// A path begins with a drive (`E:\`, `E:/`, or `E:` alone) or with one of the program's own folders
// (programFolder(), settingsFolder()); names follow, separated by `\` or `/`. "." and ".." are taken out
// first; ".." stops at that root. Windows itself would let names leave the folder, mean devices or streams of
// other files: none of that gets past here. A relative path leads nowhere.
#pragma once

#include "platform/files.h"
#include "platform/windows/unique_handle.h"

#include <string>
#include <string_view>

namespace platform::windows {

/// Where a path leads.
struct Place {
    std::string root;    ///< ANSI code page, ends in `\`
    UniqueHandle folder; ///< the root, held open when the drive had to be a certain one
    std::string native;  ///< full path in the ANSI code page; ends in `\` when it is the root itself
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

/// Finds what a path means. Ok also when the last name does not exist in a folder that does. With a drive
/// given, the root that has been opened must be that drive's, else the result is DiskNotReady.
FileResult locate(std::string_view path, Place& place, const DriveIdentity& drive = {});

/// Whether the name may stand for a file that is to be read or written: Ok also when there is none yet.
FileResult checkIsFile(const Place& place);

/// Opens the file; `access`, `share`, `disposition` (OPEN_EXISTING or OPEN_ALWAYS) are those of
/// `CreateFileA`. In a root that is held open it is that very folder's file, whatever the letter leads to by
/// now. `GetLastError` tells why there is no handle.
UniqueHandle openFile(const Place& place, unsigned long access, unsigned long share,
                      unsigned long disposition);

/// Opens a file that is there to read it from its medium, past the cache: in blocks of whole sectors, into
/// memory that is aligned as they are.
/// https://learn.microsoft.com/windows/win32/fileio/file-buffering
UniqueHandle openFileUncached(const Place& place);

} // namespace platform::windows
