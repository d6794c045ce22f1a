#include "platform/windows/path.h"

#include "base/letters.h"
#include "platform/program_folder.h"
#include "platform/windows/ansi_text.h"
#include "platform/windows/file_error.h"
#include "platform/windows/file_name.h"
#include "platform/windows/own_folders.h"
#include "platform/windows/quiet_errors.h"
#include "platform/windows/volume_identity.h"

#include <winternl.h>

#include <algorithm>
#include <optional>
#include <vector>

namespace platform::windows {

namespace {

constexpr std::string_view separators = "\\/";

bool isSeparator(char c) {
    return separators.find(c) != std::string_view::npos;
}

/// Takes the names apart; no value when one of them is none.
std::optional<std::vector<std::string>> splitNames(std::string_view rest) {
    std::vector<std::string> names;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find_first_of(separators), rest.size());
        const std::string_view name = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (name.empty() || name == ".") continue;
        if (name == "..") {
            if (!names.empty()) names.pop_back();
            continue;
        }
        auto usable = usableName(name);
        if (!usable) return std::nullopt;
        names.push_back(std::move(*usable));
    }
    return names;
}

/// Length of the longer of the program's own folders that the path begins with; 0 for none.
std::size_t ownFolderLength(std::string_view path) {
    std::size_t found = 0;
    for (std::string folder : {programFolder(), userConfigFolder()}) {
        if (!folder.empty() && isSeparator(folder.back())) folder.pop_back();
        if (folder.empty() || path.substr(0, folder.size()) != folder) continue;
        const bool ends = path.size() == folder.size() || isSeparator(path[folder.size()]);
        if (ends) found = std::max(found, folder.size());
    }
    return found;
}

/// Length of the root that the path begins with, which is stored; 0 for none.
std::size_t takeRoot(std::string_view path, Place& place) {
    if (const std::size_t length = ownFolderLength(path)) {
        const auto root = exactAnsi(path.substr(0, length));
        if (!root) return 0;
        place.root = *root + '\\';
        return length;
    }
    const bool isDrive = path.size() >= 2 && base::isLetter(path[0]) && path[1] == ':';
    if (!isDrive || (path.size() > 2 && !isSeparator(path[2]))) return 0;
    place.isOnDrive = true;
    place.root = {path[0], ':', '\\'};
    return 2;
}

/// On a drive a junction or a symbolic link is no file at all: it may lead out of the drive.
bool isRefusedLink(const Place& place, DWORD attributes) {
    return place.isOnDrive && attributes != INVALID_FILE_ATTRIBUTES &&
           (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

/// Why the name is not there; Ok when it could be created.
FileResult absence(const Place& place, DWORD error) {
    if (GetFileAttributesA(place.root.c_str()) == INVALID_FILE_ATTRIBUTES)
        return place.isOnDrive ? FileResult::DiskNotReady : FileResult::PathNotFound;
    const FileResult result = fileResult(error);
    return result == FileResult::FileNotFound ? FileResult::Ok : result;
}

/// The letter is asked behind the opening: whatever has it by then, what is open is that drive's root or a
/// root that is gone, in which nothing can be written. A volume's own number by its handle is no better, as
/// not every system tells the one of that very volume.
/// https://learn.microsoft.com/windows/win32/api/fileapi/nf-fileapi-createfilea, "Directories"
FileResult holdRoot(Place& place, const DriveIdentity& drive) {
    if (!place.isOnDrive) return FileResult::DiskNotReady;
    place.folder = UniqueHandle(CreateFileA(place.root.c_str(), FILE_READ_ATTRIBUTES | FILE_TRAVERSE,
                                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                            OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    const bool isIt = place.folder && volumeIdentity(place.root[0]) == drive.text;
    return isIt ? FileResult::Ok : FileResult::DiskNotReady;
}

std::wstring wideFromAnsi(std::string_view text) {
    const int size = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0'); // no character becomes more than one
    const int length = MultiByteToWideChar(CP_ACP, 0, text.data(), size, wide.data(), size);
    wide.resize(static_cast<std::size_t>(std::max(length, 0)));
    return wide;
}

/// https://learn.microsoft.com/windows/win32/api/winternl/nf-winternl-ntcreatefile
HANDLE openInRoot(const Place& place, DWORD access, DWORD share, DWORD disposition, ULONG options = 0) {
    std::wstring name = wideFromAnsi(std::string_view(place.native).substr(place.root.size()));
    UNICODE_STRING text{};
    text.Buffer = name.data();
    text.Length = text.MaximumLength = static_cast<USHORT>(name.size() * sizeof(wchar_t));
    OBJECT_ATTRIBUTES object{};
    InitializeObjectAttributes(&object, &text, OBJ_CASE_INSENSITIVE, place.folder.get(), nullptr);
    IO_STATUS_BLOCK outcome{};
    HANDLE file = nullptr;
    const NTSTATUS status =
        NtCreateFile(&file, access | SYNCHRONIZE | FILE_READ_ATTRIBUTES, &object, &outcome, nullptr,
                     FILE_ATTRIBUTE_ARCHIVE, share, disposition == OPEN_EXISTING ? FILE_OPEN : FILE_OPEN_IF,
                     FILE_SYNCHRONOUS_IO_NONALERT | FILE_NON_DIRECTORY_FILE | options, nullptr, 0);
    if (status >= 0) return file;
    SetLastError(RtlNtStatusToDosError(status));
    return nullptr;
}

FileResult lookUp(const std::vector<std::string>& names, Place& place) {
    place.native = place.root;
    place.attributes = GetFileAttributesA(place.root.c_str());
    if (place.attributes == INVALID_FILE_ATTRIBUTES) return absence(place, GetLastError());
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (i > 0) place.native += '\\';
        place.native += names[i];
        if (place.native.size() >= MAX_PATH) return FileResult::PathNotFound;
        const bool last = i + 1 == names.size();
        place.attributes = GetFileAttributesA(place.native.c_str());
        const DWORD error = GetLastError();
        if (isRefusedLink(place, place.attributes)) return FileResult::PathNotFound;
        if (!last && !place.isFolder()) {
            const FileResult result = place.exists() ? FileResult::Ok : absence(place, error);
            return result == FileResult::Ok ? FileResult::PathNotFound : result;
        }
        if (!place.exists()) return absence(place, error);
    }
    return FileResult::Ok;
}

} // namespace

bool Place::exists() const {
    return attributes != INVALID_FILE_ATTRIBUTES;
}

bool Place::isFolder() const {
    return exists() && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool Place::isReadOnly() const {
    return exists() && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

FileResult locate(std::string_view path, Place& place, const DriveIdentity& drive) {
    const QuietErrors quiet;
    place = {};
    place.attributes = INVALID_FILE_ATTRIBUTES;
    const std::size_t rootLength = takeRoot(path, place);
    if (rootLength == 0) return FileResult::PathNotFound;
    place.asksForFolder = path.size() > rootLength && isSeparator(path.back());
    const auto names = splitNames(path.substr(rootLength));
    if (!names) return FileResult::PathNotFound;
    place.isRoot = names->empty();
    if (drive)
        if (const FileResult result = holdRoot(place, drive); result != FileResult::Ok) return result;
    return lookUp(*names, place);
}

FileResult checkIsFile(const Place& place) {
    if (place.isRoot || place.isFolder()) return FileResult::PathFileAccess;
    return place.asksForFolder ? FileResult::PathNotFound : FileResult::Ok;
}

UniqueHandle openFileUncached(const Place& place) {
    constexpr DWORD share = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    if (place.folder)
        return UniqueHandle(
            openInRoot(place, GENERIC_READ, share, OPEN_EXISTING, FILE_NO_INTERMEDIATE_BUFFERING));
    return UniqueHandle(CreateFileA(place.native.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_NO_BUFFERING, nullptr));
}

UniqueHandle openFile(const Place& place, DWORD access, DWORD share, DWORD disposition) {
    if (place.folder) return UniqueHandle(openInRoot(place, access, share, disposition));
    return UniqueHandle(CreateFileA(place.native.c_str(), access, share, nullptr, disposition,
                                    FILE_ATTRIBUTE_ARCHIVE, nullptr));
}

} // namespace platform::windows
