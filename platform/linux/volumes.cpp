// The drives as the core asks for them, answered from the drive table.
#include "platform/volumes.h"

#include "base/text.h"
#include "platform/linux/drives/drive_source.h"
#include "platform/linux/drives/drive_table.h"

#include <algorithm>

namespace platform {

namespace {

DiskFreeSpace::Bytes littleEndian(std::uint64_t value) {
    DiskFreeSpace::Bytes bytes{};
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(value & 0xFFU);
        value >>= 8U;
    }
    return bytes;
}

/// No character is cut in two.
void store(std::string_view text, std::span<char> buffer) {
    if (buffer.empty()) return;
    std::size_t characters = base::characterCount(text);
    while (text.size() >= buffer.size())
        text = base::firstCharacters(text, --characters);
    *std::copy(text.begin(), text.end(), buffer.begin()) = '\0';
}

} // namespace

std::uint32_t logicalDriveStrings(std::span<char> buffer) {
    linux::listDrives();
    const std::string letters = linux::driveSource().letters();
    std::string roots;
    for (const char letter : letters)
        roots += {letter, ':', '\\', '\0'};
    linux::mirrorDriveTable();
    linux::drivesListed(letters);
    const auto length = static_cast<std::uint32_t>(roots.size());
    if (buffer.size() <= roots.size()) return length + 1;
    *std::copy(roots.begin(), roots.end(), buffer.begin()) = '\0';
    return length;
}

std::uint32_t driveType(std::string_view root) {
    linux::DriveSource& drives = linux::driveSource();
    const DriveType type = drives.type(linux::driveLetter(root));
    if (type == DriveNoRootDir) linux::driveMissed(drives);
    return type;
}

bool diskFreeSpace(std::string_view root, DiskFreeSpace& space) {
    linux::DriveSource& drives = linux::driveSource();
    const auto measured = drives.space(linux::driveLetter(root));
    if (!measured) {
        linux::driveMissed(drives);
        return false;
    }
    space.freeToCaller = littleEndian(measured->freeToCaller);
    space.total = littleEndian(measured->total);
    space.totalFree = littleEndian(measured->totalFree);
    return true;
}

bool volumeInformation(std::string_view root, std::span<char> label, std::span<char> fileSystem) {
    linux::DriveSource& drives = linux::driveSource();
    const auto names = drives.names(linux::driveLetter(root));
    if (!names) {
        linux::driveMissed(drives);
        return false;
    }
    store(names->label, label);
    store(names->fileSystem, fileSystem);
    return true;
}

DiskDescription diskDescription(std::string_view root) {
    return linux::driveSource().describe(linux::driveLetter(root));
}

bool setVolumeLabel(std::string_view root, std::string_view label, const DriveIdentity& drive) {
    if (drive && driveIdentity(root) != drive) return false;
    return linux::driveSource().setLabel(linux::driveLetter(root), label);
}

bool settleVolume(std::string_view root) {
    return linux::driveSource().settle(linux::driveLetter(root));
}

std::string missingDriveService() {
    return linux::driveSource().missing();
}

void releaseVolumes() {
    linux::releaseDriveTable();
}

} // namespace platform
