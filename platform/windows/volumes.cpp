#include "platform/volumes.h"

#include "base/text.h"
#include "platform/blocking.h"
#include "platform/windows/ansi_text.h"
#include "platform/windows/quiet_errors.h"
#include "platform/windows/storage_device.h"
#include "platform/windows/unique_handle.h"

#include <winioctl.h>

#include <algorithm>
#include <array>
#include <bit>
#include <optional>
#include <string>

namespace platform {

using namespace windows;

namespace {

constexpr std::size_t nameSize = MAX_PATH + 1;
constexpr std::size_t letters = 26;
constexpr std::size_t rootSize = sizeof "A:\\"; // with its NUL

std::string upToNul(std::string_view text) {
    return std::string(text.substr(0, text.find('\0')));
}

DiskFreeSpace::Bytes bytesOf(const ULARGE_INTEGER& number) {
    static_assert(std::endian::native == std::endian::little);
    return std::bit_cast<DiskFreeSpace::Bytes>(number.QuadPart);
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
    // Not every system leaves a buffer alone that is too small by the last NUL, so the system gets one that
    // never is.
    std::array<char, letters * rootSize + 1> all{};
    const DWORD length = GetLogicalDriveStringsA(static_cast<DWORD>(all.size()), all.data());
    if (buffer.size() <= length) return length + 1;
    std::copy_n(all.begin(), length + 1, buffer.begin());
    return length;
}

std::uint32_t driveType(std::string_view root) {
    const QuietErrors quiet;
    return GetDriveTypeA(upToNul(root).c_str());
}

bool diskFreeSpace(std::string_view root, DiskFreeSpace& space) {
    const auto measured = blocking([root = upToNul(root)]() -> std::optional<DiskFreeSpace> {
        const QuietErrors quiet;
        ULARGE_INTEGER freeToCaller{};
        ULARGE_INTEGER total{};
        ULARGE_INTEGER totalFree{};
        if (GetDiskFreeSpaceExA(root.c_str(), &freeToCaller, &total, &totalFree) == FALSE)
            return std::nullopt;
        return DiskFreeSpace{bytesOf(freeToCaller), bytesOf(total), bytesOf(totalFree)};
    });
    if (measured) space = *measured;
    return measured.has_value();
}

bool volumeInformation(std::string_view root, std::span<char> label, std::span<char> fileSystem) {
    struct Names {
        std::array<char, nameSize> label{};
        std::array<char, nameSize> fileSystem{};
    };
    const auto names = blocking([root = upToNul(root)]() -> std::optional<Names> {
        const QuietErrors quiet;
        Names found;
        if (GetVolumeInformationA(root.c_str(), found.label.data(), nameSize, nullptr, nullptr, nullptr,
                                  found.fileSystem.data(), nameSize) == FALSE)
            return std::nullopt;
        return found;
    });
    if (!names) return false;
    store(utf8FromAnsi(names->label.data()), label);
    store(utf8FromAnsi(names->fileSystem.data()), fileSystem);
    return true;
}

namespace {

/// Of a disk without a file system its own size is all there is.
std::uint64_t deviceSize(HANDLE device) {
    DISK_GEOMETRY disk{};
    if (!askDevice(device, IOCTL_DISK_GET_DRIVE_GEOMETRY, disk)) return 0;
    return static_cast<std::uint64_t>(disk.Cylinders.QuadPart) * disk.TracksPerCylinder *
           disk.SectorsPerTrack * disk.BytesPerSector;
}

DiskDescription describe(const std::string& root) {
    const QuietErrors quiet;
    DiskDescription disk;
    if (const UniqueHandle device = openToAsk(root[0])) {
        const StorageTexts texts = storageTexts(device.get());
        disk.maker = utf8FromAnsi(texts.maker);
        disk.model = utf8FromAnsi(texts.model);
        disk.size = deviceSize(device.get());
    }
    ULARGE_INTEGER total{};
    if (GetDiskFreeSpaceExA(root.c_str(), nullptr, &total, nullptr) != FALSE) disk.size = total.QuadPart;
    std::array<char, nameSize> label{};
    if (GetVolumeInformationA(root.c_str(), label.data(), nameSize, nullptr, nullptr, nullptr, nullptr, 0) !=
        FALSE)
        disk.label = utf8FromAnsi(label.data());
    return disk;
}

} // namespace

DiskDescription diskDescription(std::string_view root) {
    if (upToNul(root).empty()) return {};
    return blocking([root = upToNul(root)] { return describe(root); });
}

bool setVolumeLabel(std::string_view root, std::string_view label, const DriveIdentity& drive) {
    const QuietErrors quiet;
    if (drive && driveIdentity(root) != drive) return false;
    const auto text = exactAnsi(label);
    return text && blocking([root = upToNul(root), text = *text] {
               const QuietErrors quietThere;
               return SetVolumeLabelA(root.c_str(), text.c_str()) != FALSE;
           });
}

namespace {

/// A user who may not open the volume itself has to do with each file having been flushed by itself.
bool settle(const std::string& rootPath) {
    const QuietErrors quiet;
    if (GetFileAttributesA(rootPath.c_str()) == INVALID_FILE_ATTRIBUTES) return false;
    const std::string device = R"(\\.\)" + rootPath.substr(0, 2);
    const UniqueHandle volume(CreateFileA(device.c_str(), GENERIC_READ | GENERIC_WRITE,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                                          nullptr));
    if (!volume || FlushFileBuffers(volume.get()) != FALSE) return true;
    const DWORD error = GetLastError();
    return error == ERROR_ACCESS_DENIED || error == ERROR_INVALID_FUNCTION || error == ERROR_NOT_SUPPORTED;
}

} // namespace

bool settleVolume(std::string_view root) {
    return blocking([root = upToNul(root)] { return settle(root); });
}

std::string missingDriveService() {
    return {};
}

void releaseVolumes() {}

} // namespace platform
