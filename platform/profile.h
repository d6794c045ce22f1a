// Private-profile (INI) files. All text here but the path is in the ANSI code page, one character a byte; the
// path is UTF-8, as in files.h. Section and key names match regardless of case. A file that is larger than
// largestProfile counts as one that cannot be read: it has no sections and cannot be written.
#pragma once

#include "platform/drive_identity.h"
#include "platform/files.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace platform {

/// Bytes. What is larger was made by no program that this one has to do with, and whoever plugs in such a
/// stick does not wait for it.
inline constexpr std::uint64_t largestProfile = 1024ULL * 1024;

/// Whether the file is there and the functions below take it in.
bool profileIsReadable(std::string_view path);

/// Stores the lines of a section, comments left out, each followed by a NUL, and one more NUL at the end.
/// Returns the number of characters without that last NUL; size − 2 when they did not all fit; 0 for a
/// missing file or section. Windows: `GetPrivateProfileSectionA`,
/// https://learn.microsoft.com/windows/win32/api/winbase/nf-winbase-getprivateprofilesectiona
std::uint32_t profileSection(std::string_view section, std::span<char> buffer, std::string_view path);

/// The same for the names of all sections. Windows: `GetPrivateProfileSectionNamesA`,
/// https://learn.microsoft.com/windows/win32/api/winbase/nf-winbase-getprivateprofilesectionnamesa
std::uint32_t profileSectionNames(std::span<char> buffer, std::string_view path);

/// Stores the lines of a section as profileSection() does, all of them and without the last NUL, for whoever
/// has to know a file without that section from one that cannot be read. One that is larger than
/// largestProfile is PathFileAccess.
FileResult readProfileSection(std::string_view section, std::string& lines, std::string_view path);

/// Writes one key, or deletes it (no value), or deletes the section (no key). Lines that it does not touch
/// stay as they are, and the file's old contents are safe until the new ones are. False when the file could
/// not be written or read, would become larger than largestProfile, or when a text holds a line end or a NUL.
/// `drive` is the drive that the path has to lead to, as in files.h. Windows knows the file by its letter
/// alone: there the drive is compared before the new file is begun beside the old one, and again once it is
/// on the medium. One that gets the letter in between may have the new file on it until then, but not in the
/// place of the old one, and one that loses it may keep an unfinished file. Windows:
/// `WritePrivateProfileStringA`,
/// https://learn.microsoft.com/windows/win32/api/winbase/nf-winbase-writeprivateprofilestringa
bool writeProfileString(std::string_view section, std::optional<std::string_view> key,
                        std::optional<std::string_view> value, std::string_view path,
                        const DriveIdentity& drive = {});

/// Makes the file one of these contents, or puts it in the place of the one that is there: whatever happens,
/// there is either the old file or the new one, with all of it. False when it could not be written; the old
/// one is still there then. Windows: `MoveFileExA`,
/// https://learn.microsoft.com/windows/win32/api/winbase/nf-winbase-movefileexa
bool replaceProfile(std::string_view contents, std::string_view path);

} // namespace platform
