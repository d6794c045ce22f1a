// Drives made out of folders: Wine's mount manager takes them as winecfg hands them over, at any time. `C:`
// and `Z:` are those of the Wine prefix.
#include "tests/conformance/environment.h"

#include "tests/conformance/windows/environment_unix.h"

#include <windows.h>

#include <winioctl.h>

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace fs = std::filesystem;

namespace conformance {

namespace {

constexpr DWORD defineDrive = CTL_CODE('m', 32, METHOD_BUFFERED, FILE_READ_ACCESS | FILE_WRITE_ACCESS);

/// What the mount manager is told; offsets count from the beginning, 0 for none.
struct DriveDefinition {
    ULONG size;
    ULONG type; ///< DRIVE_NO_ROOT_DIR takes the drive away
    ULONG fileSystem;
    DWORD serial;
    ULONGLONG device;
    WCHAR letter;
    USHORT folderOffset;
    USHORT deviceOffset;
    USHORT labelOffset;
};

void define(char letter, ULONG type, const std::string& hostFolder) {
    DriveDefinition definition{};
    definition.type = type;
    definition.letter = static_cast<WCHAR>(letter);
    definition.size = static_cast<ULONG>(sizeof definition + hostFolder.size() + 1);
    if (!hostFolder.empty()) definition.folderOffset = sizeof definition;
    std::vector<char> message(definition.size);
    std::copy_n(reinterpret_cast<const char*>(&definition), sizeof definition, message.begin());
    std::copy(hostFolder.begin(), hostFolder.end(), message.begin() + sizeof definition);

    const HANDLE manager =
        CreateFileA("\\\\.\\MountPointManager", GENERIC_READ | GENERIC_WRITE,
                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    DWORD returned = 0;
    const BOOL done = DeviceIoControl(manager, defineDrive, message.data(), definition.size, nullptr, 0,
                                      &returned, nullptr);
    CloseHandle(manager);
    if (done == FALSE) throw std::runtime_error(std::string("the drive cannot be defined: ") + letter);
}

void undefine(char letter) {
    define(letter, DRIVE_NO_ROOT_DIR, {});
}

std::string rootOf(char letter) {
    return {letter, ':', '\\'};
}

/// What a test that was broken off has left.
void undefineAll() {
    for (char letter = 'D'; letter < 'Z'; ++letter)
        if (GetDriveTypeA(rootOf(letter).c_str()) != DRIVE_NO_ROOT_DIR) undefine(letter);
}

/// A new folder; Wine gives process numbers again, so one that was broken off may have left one of that name.
fs::path newFolder() {
    static int counter = 0;
    for (;;) {
        const std::string name =
            "conformance-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(counter++);
        fs::path folder = fs::temp_directory_path() / name;
        if (fs::create_directory(folder)) return folder;
    }
}

} // namespace

Drives::Drives() : base_(newFolder()) {
    undefineAll();
}

Drives::~Drives() {
    for (auto& [letter, drive] : drives_) {
        undefine(letter);
        release(drive);
    }
    std::error_code ignored;
    fs::remove_all(base_, ignored);
}

fs::path Drives::add(char letter, platform::DriveType type) {
    create(letter, type);
    return drives_.at(letter).folder;
}

std::optional<fs::path> Drives::addSmall(char letter, std::uint64_t bytes) {
    const fs::path folder = base_ / std::string(1, letter);
    fs::create_directory(folder);
    const std::string host = hostPath(folder.wstring());
    const std::string options = "mode=0777,size=" + std::to_string(bytes);
    const std::string command =
        "mount -t tmpfs -o " + options + " tmpfs '" + host + "' 2>/dev/null && echo mounted";
    if (outputOfShell(command).empty()) {
        fs::remove(folder);
        return std::nullopt;
    }
    drives_[letter] = {platform::DriveRemovable, folder, true};
    define(letter, platform::DriveRemovable, host);
    return folder;
}

void Drives::readAgain(char letter) {
    const Drive& drive = drives_.at(letter);
    undefine(letter);
    define(letter, drive.type, hostPath(drive.folder.wstring()));
}

void Drives::remove(char letter) {
    undefine(letter);
    release(drives_.at(letter));
    drives_.erase(letter);
}

void Drives::removeMedium(char letter) {
    release(drives_.at(letter));
}

void Drives::create(char letter, platform::DriveType type) {
    const fs::path folder = base_ / std::string(1, letter);
    fs::create_directory(folder);
    drives_[letter] = {type, folder};
    define(letter, type, hostPath(folder.wstring()));
}

void Drives::release(Drive& drive) {
    if (drive.mounted) outputOfShell("umount -l '" + hostPath(drive.folder.wstring()) + "'");
    drive.mounted = false;
    std::error_code ignored;
    fs::remove_all(drive.folder, ignored);
}

} // namespace conformance
