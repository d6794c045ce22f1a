#include "platform/program_folder.h"

#include "build_choices.h"
#include "platform/windows/ansi_text.h"
#include "platform/windows/own_folders.h"
#include "platform/windows/quiet_errors.h"
#include "platform/windows/unique_handle.h"

#include <shlobj.h>

#include <array>
#include <string>

namespace platform {

using namespace windows;

namespace {

constexpr const char* settingsFile = "\\Settings.ini";
constexpr const char* folderName = "\\orvanta-usbtool";
constexpr const char* nobodysFolder = "\\nobody"; // never there: nothing is written
constexpr std::size_t longestPath = 32768;

std::wstring moduleFile() {
    std::wstring file(longestPath, L'\0');
    file.resize(GetModuleFileNameW(nullptr, file.data(), static_cast<DWORD>(file.size())));
    return file;
}

/// A folder whose name the ANSI functions cannot be told has a short name, as a rule, which they can.
std::string ansiPath(const std::wstring& path) {
    const auto narrow = [](std::wstring_view text, BOOL& replaced) {
        std::string ansi(longestPath * 2, '\0');
        const int length =
            WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, text.data(), static_cast<int>(text.size()),
                                ansi.data(), static_cast<int>(ansi.size()), nullptr, &replaced);
        ansi.resize(static_cast<std::size_t>(length));
        return ansi;
    };
    BOOL replaced = FALSE;
    std::string ansi = narrow(path, replaced);
    if (replaced == FALSE) return ansi;
    std::wstring shortPath(longestPath, L'\0');
    shortPath.resize(GetShortPathNameW(path.c_str(), shortPath.data(), static_cast<DWORD>(shortPath.size())));
    return shortPath.empty() ? ansi : narrow(shortPath, replaced);
}

std::string findProgramFolder() {
    const std::wstring file = moduleFile();
    const std::size_t separator = file.rfind(L'\\');
    if (separator == std::wstring::npos) return {};
    const bool isRoot = separator == 2 && file[1] == L':';
    return utf8FromAnsi(ansiPath(file.substr(0, isRoot ? separator + 1 : separator)));
}

/// Whether a file can be created in the folder, found out by creating one that goes again at once.
bool takesFiles(const std::string& folder) {
    const std::string name = folder + "\\~settings-" + std::to_string(GetCurrentProcessId()) + ".tmp";
    const UniqueHandle created(CreateFileA(name.c_str(), GENERIC_WRITE | DELETE, 0, nullptr, CREATE_ALWAYS,
                                           FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    return static_cast<bool>(created);
}

bool canBeWritten(const std::string& file) {
    const UniqueHandle opened(CreateFileA(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                          nullptr, OPEN_EXISTING, 0, nullptr));
    return opened || GetLastError() == ERROR_FILE_NOT_FOUND;
}

bool takesSettings(const std::string& folder) {
    const auto path = exactAnsi(folder);
    return path && takesFiles(*path) && canBeWritten(*path + settingsFile);
}

} // namespace

std::string windows::userConfigFolder() {
    std::array<char, MAX_PATH> folder{};
    const HRESULT result =
        SHGetFolderPathA(nullptr, CSIDL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, folder.data());
    return result == S_OK ? utf8FromAnsi(folder.data()) + folderName : std::string();
}

std::string programFolder() {
    static const std::string folder = findProgramFolder();
    return folder;
}

std::string settingsFolder() {
    const QuietErrors quiet;
    std::string program = programFolder();
    if (base::portable && takesSettings(program)) return program;
    std::string own = userConfigFolder();
    if (own.empty()) return base::portable ? program : program + nobodysFolder;
    // When it fails, writing the settings does, and that is reported there.
    CreateDirectoryA(nearestAnsi(own).c_str(), nullptr);
    return own;
}

} // namespace platform
