#include "tests/conformance/environment.h"

#include <sys/mount.h>

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace conformance {

namespace {

/// The table of drives, which the program looks for beside itself.
fs::path tableFile() {
    return fs::read_symlink("/proc/self/exe").parent_path() / "Drives.ini";
}

fs::path newFolder() {
    std::string name = fs::temp_directory_path() / ("conformance-" + std::string(6, 'X'));
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    return fs::canonical(name);
}

} // namespace

Drives::Drives() : base_(newFolder()) {
    create('C', platform::DriveFixed);
    create('Z', platform::DriveRemote);
    publish();
}

Drives::~Drives() {
    std::error_code ignored;
    fs::remove(tableFile(), ignored);
    for (auto& [letter, drive] : drives_)
        release(drive);
    fs::remove_all(base_, ignored);
}

fs::path Drives::add(char letter, platform::DriveType type) {
    create(letter, type);
    publish();
    return drives_.at(letter).folder;
}

std::optional<fs::path> Drives::addSmall(char letter, std::uint64_t bytes) {
    create(letter, platform::DriveRemovable);
    Drive& drive = drives_.at(letter);
    const std::string options = "mode=0777,size=" + std::to_string(bytes);
    drive.mounted = mount("tmpfs", drive.folder.c_str(), "tmpfs", MS_NOSUID | MS_NODEV, options.c_str()) == 0;
    if (!drive.mounted) {
        remove(letter);
        return std::nullopt;
    }
    publish();
    return drive.folder;
}

/// What was written into the table is what the program reads.
void Drives::readAgain(char /*letter*/) {}

fs::path Drives::exchangeMedium(char letter) {
    const fs::path folder = drives_.at(letter).folder;
    fs::rename(folder, folder.string() + ".old");
    fs::create_directory(folder);
    return folder;
}

void Drives::remove(char letter) {
    release(drives_.at(letter));
    drives_.erase(letter);
    publish();
}

void Drives::removeMedium(char letter) {
    release(drives_.at(letter));
}

void Drives::create(char letter, platform::DriveType type) {
    const fs::path folder = base_ / std::string(1, letter);
    fs::create_directory(folder);
    drives_[letter] = {type, folder};
}

void Drives::release(Drive& drive) {
    if (drive.mounted) umount2(drive.folder.c_str(), MNT_DETACH);
    drive.mounted = false;
    std::error_code ignored;
    fs::remove_all(drive.folder, ignored);
}

/// The table is exchanged as a whole, so that nobody reads half of one.
void Drives::publish() const {
    const fs::path file = tableFile();
    const fs::path next = file.string() + ".new";
    {
        std::ofstream table(next, std::ios::binary);
        for (const auto& [letter, drive] : drives_) {
            table << '[' << letter << ":]\r\nType=" << static_cast<unsigned>(drive.type)
                  << "\r\nPath=" << drive.folder.string() << "\r\nFileSystem=FAT32\r\n";
        }
        if (!table.flush()) throw std::runtime_error("the table of drives cannot be written");
    }
    fs::rename(next, file);
}

} // namespace conformance
