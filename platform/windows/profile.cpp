#include "platform/profile.h"

#include "platform/windows/path.h"
#include "platform/windows/quiet_errors.h"
#include "platform/windows/unique_handle.h"

#include <windows.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace platform {

using namespace windows;

namespace {

constexpr std::size_t smallestBuffer = 3; ///< in less than that the functions tell nothing, or write too much

bool fitsInLine(std::string_view text) {
    return text.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
}

bool isBlank(std::string_view text) {
    return text.find_first_not_of(std::string_view("\t\n\v\f\r \x1A")) == std::string_view::npos;
}

std::string upToNul(std::string_view text) {
    return std::string(text.substr(0, text.find('\0')));
}

/// No value when the file cannot be opened to be read.
std::optional<std::uint64_t> sizeOfFile(const Place& place) {
    const UniqueHandle opened(CreateFileA(place.native.c_str(), GENERIC_READ,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                          OPEN_EXISTING, 0, nullptr));
    LARGE_INTEGER size{};
    if (!opened || GetFileSizeEx(opened.get(), &size) == FALSE) return std::nullopt;
    return static_cast<std::uint64_t>(size.QuadPart);
}

/// The functions themselves would read a file of any size.
bool locateProfile(std::string_view path, Place& place) {
    return locate(path, place) == FileResult::Ok && place.isFile() &&
           sizeOfFile(place).value_or(UINT64_MAX) <= largestProfile;
}

/// Whether the file stays one that can be read when that many bytes are added at the most.
bool staysReadable(const Place& place, std::size_t growth) {
    const auto size = place.exists() ? sizeOfFile(place) : std::uint64_t{0};
    return size && *size <= largestProfile && growth <= largestProfile - *size;
}

/// What a missing file or section gives.
std::uint32_t nothing(std::span<char> buffer) {
    std::fill_n(buffer.begin(), std::min<std::size_t>(buffer.size(), 2), '\0');
    return 0;
}

DWORD sizeOf(std::span<char> buffer) {
    return static_cast<DWORD>(std::min<std::size_t>(buffer.size(), MAXDWORD));
}

/// Whether the letter still leads to that drive; yes when it may be any.
bool leadsTo(const std::string& root, const DriveIdentity& drive) {
    return !drive || driveIdentity(root) == drive;
}

/// Cuts the first line off the text, and its line end.
std::string_view takeLine(std::string_view& text) {
    const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
    text.remove_prefix(std::min(text.size(), line.size() + 1));
    return line;
}

/// Whether the text, in the ANSI code page, has that section with a line in it that no reading of it leaves
/// out.
bool hasLines(std::string_view text, std::string_view section) {
    const std::string sectionLine = '[' + std::string(section) + ']';
    bool isInside = false;
    while (!text.empty()) {
        const std::string line = upToNul(takeLine(text));
        if (isInside && line.starts_with('[')) return false;
        if (isInside && !line.empty() && std::isalnum(static_cast<unsigned char>(line[0])) != 0) return true;
        if (lstrcmpiA(line.c_str(), sectionLine.c_str()) == 0) isInside = true;
    }
    return false;
}

/// A file beside the profile that goes again unless it has taken the profile's place.
class Draft {
public:
    Draft(const Place& profile, DriveIdentity drive)
        : root_(profile.root),
          drive_(std::move(drive)),
          profile_(profile.native),
          replaces_(profile.exists()) {
        if (!leadsTo(root_, drive_)) return;
        static unsigned counter = 0;
        const std::string folder = profile_.substr(0, profile_.rfind('\\') + 1);
        constexpr int attempts = 100;
        for (int i = 0; i < attempts && !exists_; ++i) {
            file_ = folder + "~profile-" + std::to_string(GetCurrentProcessId()) + "-" +
                    std::to_string(counter++) + ".tmp";
            exists_ = create();
            if (!exists_ && GetLastError() != ERROR_FILE_EXISTS) break;
        }
    }
    Draft(const Draft&) = delete;
    Draft& operator=(const Draft&) = delete;
    ~Draft() {
        if (exists_) DeleteFileA(file_.c_str());
    }

    bool exists() const { return exists_; }
    const std::string& file() const { return file_; }

    /// On the medium first, then in the profile's place: a stick that is pulled has either the old or the new
    /// file. The functions know a file by its path alone, so the drive is looked at again in between.
    bool takePlace() {
        if (!flush() || !leadsTo(root_, drive_)) return false;
        if (MoveFileExA(file_.c_str(), profile_.c_str(),
                        MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == FALSE)
            return false;
        exists_ = false;
        return true;
    }

private:
    bool create() const {
        if (!replaces_) {
            const UniqueHandle created(CreateFileA(file_.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                                   FILE_ATTRIBUTE_ARCHIVE, nullptr));
            return static_cast<bool>(created);
        }
        if (CopyFileA(profile_.c_str(), file_.c_str(), TRUE) != FALSE) return true;
        const DWORD error = GetLastError();
        if (error != ERROR_FILE_EXISTS) DeleteFileA(file_.c_str()); // half of a copy
        SetLastError(error);
        return false;
    }

    bool flush() const {
        UniqueHandle opened(CreateFileA(file_.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                        OPEN_EXISTING, 0, nullptr));
        return opened && FlushFileBuffers(opened.get()) != FALSE && opened.close();
    }

    std::string root_;
    DriveIdentity drive_;
    std::string profile_;
    std::string file_;
    bool replaces_;
    bool exists_ = false;
};

/// Whether the medium has room for another copy of the file with that many bytes more: not every system
/// reports it when the functions run out of it.
bool hasRoom(const Place& place, std::size_t growth) {
    ULARGE_INTEGER free{};
    WIN32_FILE_ATTRIBUTE_DATA data{};
    const std::string folder = place.native.substr(0, place.native.rfind('\\') + 1);
    if (GetDiskFreeSpaceExA(folder.c_str(), &free, nullptr, nullptr) == FALSE) return true;
    if (place.exists()) GetFileAttributesExA(place.native.c_str(), GetFileExInfoStandard, &data);
    return free.QuadPart >= data.nFileSizeLow + growth;
}

/// What the functions keep in memory of the file is written, and forgotten.
void dropCache(const std::string& file) {
    WritePrivateProfileStringA(nullptr, nullptr, nullptr, file.c_str());
}

bool writeContents(const std::string& file, std::string_view contents) {
    UniqueHandle opened(CreateFileA(file.c_str(), GENERIC_WRITE, 0, nullptr, TRUNCATE_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    return opened &&
           WriteFile(opened.get(), contents.data(), static_cast<DWORD>(contents.size()), &written, nullptr) !=
               FALSE &&
           written == contents.size() && opened.close();
}

/// Whether the user may change the file, which the exchange of it would not find out.
bool mayWrite(const Place& place) {
    if (!place.exists()) return true;
    if (place.isReadOnly()) return false;
    const UniqueHandle opened(CreateFileA(place.native.c_str(), GENERIC_WRITE,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                                          nullptr));
    return static_cast<bool>(opened);
}

} // namespace

bool profileIsReadable(std::string_view path) {
    const QuietErrors quiet;
    Place place;
    return locateProfile(path, place);
}

std::uint32_t profileSection(std::string_view section, std::span<char> buffer, std::string_view path) {
    const QuietErrors quiet;
    Place place;
    if (buffer.size() < smallestBuffer || !locateProfile(path, place)) return nothing(buffer);
    return GetPrivateProfileSectionA(upToNul(section).c_str(), buffer.data(), sizeOf(buffer),
                                     place.native.c_str());
}

std::uint32_t profileSectionNames(std::span<char> buffer, std::string_view path) {
    const QuietErrors quiet;
    Place place;
    if (buffer.size() < smallestBuffer || !locateProfile(path, place)) return nothing(buffer);
    return GetPrivateProfileSectionNamesA(buffer.data(), sizeOf(buffer), place.native.c_str());
}

/// The system's function does not tell why it found nothing: so it is looked up what it should have found.
FileResult readProfileSection(std::string_view section, std::string& lines, std::string_view path) {
    lines.clear();
    if (fileLength(path).value_or(0) > largestProfile) return FileResult::PathFileAccess;
    std::string text;
    const FileResult result = readWholeFile(path, text);
    lines.assign(text.size() + smallestBuffer, '\0');
    lines.resize(result == FileResult::Ok ? profileSection(section, lines, path) : 0);
    return lines.empty() && hasLines(text, section) ? FileResult::DeviceIo : result;
}

bool writeProfileString(std::string_view section, std::optional<std::string_view> key,
                        std::optional<std::string_view> value, std::string_view path,
                        const DriveIdentity& drive) {
    const QuietErrors quiet;
    if (!fitsInLine(section) || !fitsInLine(key.value_or("")) || !fitsInLine(value.value_or("")))
        return false;
    if (key && isBlank(*key)) return false;
    Place place;
    if (locate(path, place, drive) != FileResult::Ok || checkIsFile(place) != FileResult::Ok ||
        !mayWrite(place))
        return false;
    if ((!key || !value) && !place.exists()) return true; // nothing there that could be deleted

    const std::string sectionText(section);
    const std::string keyText(key.value_or(""));
    const std::string valueText(value.value_or(""));
    constexpr std::size_t signs = 7; // the brackets, the sign between key and value, two line ends
    const std::size_t growth =
        key && value ? sectionText.size() + keyText.size() + valueText.size() + signs : 0;
    if (!staysReadable(place, growth)) return false;
    Draft draft(place, drive);
    if (!draft.exists() || !hasRoom(place, growth)) return false;
    const bool written =
        WritePrivateProfileStringA(sectionText.c_str(), key ? keyText.c_str() : nullptr,
                                   key && value ? valueText.c_str() : nullptr, draft.file().c_str()) != FALSE;
    dropCache(draft.file());
    if (!written || !draft.takePlace()) return false;
    dropCache(place.native);
    return true;
}

bool replaceProfile(std::string_view contents, std::string_view path) {
    const QuietErrors quiet;
    Place place;
    if (locate(path, place) != FileResult::Ok || checkIsFile(place) != FileResult::Ok || !mayWrite(place))
        return false;
    Draft draft(place, {});
    if (!draft.exists() || !writeContents(draft.file(), contents) || !draft.takePlace()) return false;
    dropCache(place.native);
    return true;
}

} // namespace platform
