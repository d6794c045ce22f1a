// Drives made out of folders. `C:` and `Z:` are those of the Wine prefix.
#include "tests/conformance/environment.h"

#include "tests/conformance/windows/environment_unix.h"
#include "tests/support/wine_drives.h"

#include <windows.h>

#include <fstream>

namespace fs = std::filesystem;

namespace conformance {

namespace {

std::string rootOf(char letter) {
    return {letter, ':', '\\'};
}

/// What a test that was broken off has left.
void undefineAll() {
    for (char letter = 'D'; letter < 'Z'; ++letter)
        if (GetDriveTypeA(rootOf(letter).c_str()) != DRIVE_NO_ROOT_DIR) wine::undefineDrive(letter);
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
        wine::undefineDrive(letter);
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
    wine::defineDrive(letter, platform::DriveRemovable, host);
    return folder;
}

void Drives::readAgain(char letter) {
    const Drive& drive = drives_.at(letter);
    wine::undefineDrive(letter);
    wine::defineDrive(letter, drive.type, hostPath(drive.folder.wstring()));
}

fs::path Drives::exchangeMedium(char letter) {
    const fs::path folder = drives_.at(letter).folder;
    fs::rename(folder, folder.string() + ".old");
    fs::create_directory(folder);
    std::ofstream(folder / ".windows-serial")
        << "0815CAFE\n"; // where Wine keeps the serial number of a folder
    readAgain(letter);
    return folder;
}

void Drives::remove(char letter) {
    wine::undefineDrive(letter);
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
    wine::defineDrive(letter, type, hostPath(folder.wstring()));
}

void Drives::release(Drive& drive) {
    if (drive.mounted) outputOfShell("umount -l '" + hostPath(drive.folder.wstring()) + "'");
    drive.mounted = false;
    std::error_code ignored;
    fs::remove_all(drive.folder, ignored);
}

} // namespace conformance
