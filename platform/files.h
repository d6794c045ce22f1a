// Files and folders by the paths of the program: a drive root (`E:\`) or a folder given by program_folder.h,
// then names separated by `\`. Names match regardless of case. `..` stops at the root; a device name (`NUL`,
// `COM1`), a control character or one of `<>:"|?*` in a name is a path that is not found. No path leaves its
// drive.
//
// What writes takes the identity of the drive that the path has to lead to. It is compared when the drive's
// root folder is open, and everything happens in that folder: on another drive that has the letter meanwhile
// the result is DiskNotReady, and nothing has been touched. An empty identity is any drive.
#pragma once

#include "platform/drive_identity.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// File attributes, bits. Windows: `GetFileAttributesA`,
/// https://learn.microsoft.com/windows/win32/fileio/file-attribute-constants
enum FileAttribute : std::uint32_t {
    FileReadOnly = 1,
    FileHidden = 2,
    FileSystem = 4,
    FileVolume = 8,
    FileDirectory = 16,
    FileArchive = 32,
};

/// What a file operation came to; the values are the classic run-time error numbers (base::ErrorNumber).
enum class [[nodiscard]] FileResult{
    Ok = 0,
    FileNotFound = 53,
    DeviceIo = 57,
    DiskFull = 61,
    PermissionDenied = 70, ///< read-only file, write-protected medium, no right
    DiskNotReady = 71,     ///< the drive or its medium is not there
    PathFileAccess = 75,   ///< the path names a folder
    PathNotFound = 76,
};

/// Attributes of a file or folder; no value when there is none. Windows: `GetFileAttributesA`.
std::optional<std::uint32_t> fileAttributes(std::string_view path);

/// Length of a file in bytes; no value when there is no such file.
std::optional<std::uint64_t> fileLength(std::string_view path);

/// Reads a whole file into `contents`, which is empty after a failure.
FileResult readWholeFile(std::string_view path, std::string& contents);

/// Creates the file or empties it, writes the contents and brings them onto the medium before it returns.
FileResult writeWholeFile(std::string_view path, std::string_view contents, const DriveIdentity& drive = {});

/// Copies a file over the target if there is one, whatever attributes that has, and brings it onto the medium
/// before it returns. The copy gets the source's attributes but the read-only one, which would keep the next
/// copy from its place. A file is not copied onto itself (PermissionDenied). A target that is such a copy
/// already, as its medium has it, may be left alone, to spare the medium: `untouched` then becomes true.
FileResult copyFile(std::string_view source, std::string_view target, const DriveIdentity& drive = {},
                    bool* untouched = nullptr);

/// Reads the file back from its medium, past what the system remembers of it, and compares it: DeviceIo when
/// the medium holds anything else. Windows: `CreateFileA` with FILE_FLAG_NO_BUFFERING.
FileResult compareFile(std::string_view path, std::string_view contents, const DriveIdentity& drive = {});

/// Windows: `DeleteFileA`.
FileResult deleteFile(std::string_view path);

/// One entry of a folder.
struct FoundFile {
    std::string name; ///< without its folder; UTF-8
    std::uint32_t attributes = 0;
};

/// The entries that a path names: all of a folder when it ends in `\*.*` or `\*`, "." and ".." included where
/// the folder is not a drive's root; else the one file or folder itself. Windows: `FindFirstFileA`,
/// `FindNextFileA`, `FindClose`,
/// https://learn.microsoft.com/windows/win32/api/fileapi/nf-fileapi-findfirstfilea
class FileSearch {
public:
    explicit FileSearch(std::string_view path);
    FileSearch(const FileSearch&) = delete;
    FileSearch& operator=(const FileSearch&) = delete;
    ~FileSearch();

    /// Stores the next entry; false when there is none left, or when the folder cannot be read.
    bool next(FoundFile& found);

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace platform
