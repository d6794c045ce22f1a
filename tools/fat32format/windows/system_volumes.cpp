#include "tools/fat32format/windows/system_volumes.h"

#include "platform/windows/unique_handle.h"
#include "tools/fat32format/windows/volume_facts.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>

namespace fat32format {

namespace {

using platform::windows::UniqueHandle;

using Names = std::vector<std::wstring>;

constexpr std::size_t longestPath = 32768;

/// Texts of a value of the registry; none when there is no such value. No value when it cannot be read.
/// https://learn.microsoft.com/windows/win32/api/winreg/nf-winreg-reggetvaluew
std::optional<Names> readTexts(const wchar_t* key, const wchar_t* name) {
    HKEY opened = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, key, 0, KEY_QUERY_VALUE, &opened) != ERROR_SUCCESS)
        return std::nullopt;
    const std::unique_ptr<HKEY__, decltype(&RegCloseKey)> closing(opened, RegCloseKey);
    std::vector<wchar_t> room(longestPath);
    auto size = static_cast<DWORD>(room.size() * sizeof(wchar_t));
    const LSTATUS status =
        RegGetValueW(opened, nullptr, name, RRF_RT_REG_SZ | RRF_RT_REG_MULTI_SZ, nullptr, room.data(), &size);
    if (status == ERROR_FILE_NOT_FOUND) return Names();
    if (status != ERROR_SUCCESS) return std::nullopt;
    Names texts;
    const wchar_t* end = room.data() + size / sizeof(wchar_t);
    for (const wchar_t* text = room.data(); text < end && *text != L'\0'; text += texts.back().size() + 1)
        texts.emplace_back(text, std::find(text, end, L'\0'));
    return texts;
}

/// `\\?\Volume{...}` of the volume that the folder is the root of. No value when it has no such name.
std::optional<std::wstring> volumeWithRoot(const std::wstring& folder) {
    std::array<wchar_t, MAX_PATH> name{};
    if (GetVolumeNameForVolumeMountPointW(folder.c_str(), name.data(), static_cast<DWORD>(name.size())) ==
        FALSE)
        return std::nullopt;
    std::wstring volume = name.data();
    if (!volume.empty() && volume.back() == L'\\') volume.pop_back(); // with it, it is the root folder
    return volume;
}

/// The same of an open file, through every link and letter that stands for a folder.
/// https://learn.microsoft.com/windows/win32/api/fileapi/nf-fileapi-getfinalpathnamebyhandlew
std::optional<std::wstring> volumeWithFile(const std::wstring& file) {
    const UniqueHandle opened(CreateFileW(file.c_str(), 0,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                          OPEN_EXISTING, 0, nullptr));
    std::wstring path(longestPath, L'\0');
    if (!opened) return std::nullopt;
    path.resize(GetFinalPathNameByHandleW(opened.get(), path.data(), static_cast<DWORD>(path.size()),
                                          VOLUME_NAME_GUID));
    const std::size_t end = path.find(L'}');
    if (!path.starts_with(L"\\\\?\\Volume{") || end == std::wstring::npos) return std::nullopt;
    return path.substr(0, end + 1);
}

std::optional<std::wstring> volumeOf(const std::wstring& file) {
    std::vector<wchar_t> root(longestPath);
    if (auto volume = volumeWithFile(file)) return volume;
    if (GetVolumePathNameW(file.c_str(), root.data(), static_cast<DWORD>(root.size())) == FALSE)
        return std::nullopt;
    return volumeWithRoot(root.data());
}

bool addWindows(Names& volumes) {
    std::array<wchar_t, MAX_PATH> folder{};
    const UINT size = GetSystemWindowsDirectoryW(folder.data(), static_cast<UINT>(folder.size()));
    if (size == 0 || size >= folder.size()) return false;
    volumes.push_back(volumeName(folder[0]));
    return true;
}

/// Of another computer, by its name or by a letter.
bool isElsewhere(std::wstring file) {
    const std::wstring longForm = L"\\\\?\\";
    if (file.starts_with(longForm + L"UNC\\")) return true;
    if (file.starts_with(longForm)) file.erase(0, longForm.size());
    return file.starts_with(L"\\\\") || GetDriveTypeW(file.substr(0, 3).c_str()) == DRIVE_REMOTE;
}

/// A program that was started from another computer lies on none of the volumes here.
bool addOwn(Names& volumes) {
    std::wstring file(longestPath, L'\0');
    file.resize(GetModuleFileNameW(nullptr, file.data(), static_cast<DWORD>(file.size())));
    if (file.empty()) return false;
    if (isElsewhere(file)) return true;
    const auto volume = volumeOf(file);
    if (volume) volumes.push_back(*volume);
    return volume.has_value();
}

/// The system partition, as Windows notes it at each start: `\Device\HarddiskVolume1`.
bool addStarting(Names& volumes) {
    const auto devices = readTexts(L"SYSTEM\\Setup", L"SystemPartition");
    if (!devices || devices->empty() || !devices->front().starts_with(L"\\Device\\")) return false;
    volumes.push_back(L"\\\\?\\GLOBALROOT" + devices->front());
    return true;
}

/// Whether there is a volume that a page file can lie on: Windows may have given the letter to a drive
/// without a medium, or to another computer's folder since.
bool isThere(wchar_t letter) {
    const std::wstring root = {letter, L':', L'\\'};
    const UINT type = GetDriveTypeW(root.c_str());
    if (type != DRIVE_REMOVABLE) return type == DRIVE_FIXED;
    return GetVolumeInformationW(root.c_str(), nullptr, 0, nullptr, nullptr, nullptr, nullptr, 0) != FALSE;
}

bool addPageFiles(Names& volumes) {
    const wchar_t* key = L"SYSTEM\\CurrentControlSet\\Control\\Session Manager\\Memory Management";
    for (const wchar_t* value : {L"ExistingPageFiles", L"PagingFiles"}) {
        const auto files = readTexts(key, value);
        const auto letters = files ? lettersOfPageFiles(*files) : std::nullopt;
        if (!letters) return false;
        for (const wchar_t letter : *letters)
            if (isThere(letter)) volumes.push_back(volumeName(letter));
    }
    return true;
}

} // namespace

std::optional<std::vector<wchar_t>> lettersOfPageFiles(const std::vector<std::wstring>& files) {
    std::vector<wchar_t> letters;
    for (std::wstring_view file : files) {
        const std::wstring_view prefix = L"\\??\\";
        if (file.starts_with(prefix)) file.remove_prefix(prefix.size());
        if (file.empty() || file.starts_with(L"?:")) continue;
        const auto letter = static_cast<wchar_t>(file.front() & ~L' '); // upper case
        if (letter < L'A' || letter > L'Z' || file.substr(1, 1) != L":") return std::nullopt;
        letters.push_back(letter);
    }
    return letters;
}

std::optional<std::vector<std::wstring>> volumesOfWindows() {
    Names volumes;
    if (!addWindows(volumes) || !addOwn(volumes) || !addStarting(volumes) || !addPageFiles(volumes))
        return std::nullopt;
    std::sort(volumes.begin(), volumes.end());
    volumes.erase(std::unique(volumes.begin(), volumes.end()), volumes.end());
    return volumes;
}

} // namespace fat32format
