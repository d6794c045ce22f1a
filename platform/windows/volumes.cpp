#include "platform/volumes.h"

#include "base/text.h"
#include "platform/windows/ansi_text.h"
#include "platform/windows/quiet_errors.h"
#include "platform/windows/unique_handle.h"

#include <algorithm>
#include <array>
#include <bit>
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
    const QuietErrors quiet;
    ULARGE_INTEGER freeToCaller{};
    ULARGE_INTEGER total{};
    ULARGE_INTEGER totalFree{};
    if (GetDiskFreeSpaceExA(upToNul(root).c_str(), &freeToCaller, &total, &totalFree) == FALSE) return false;
    space = {bytesOf(freeToCaller), bytesOf(total), bytesOf(totalFree)};
    return true;
}

bool volumeInformation(std::string_view root, std::span<char> label, std::span<char> fileSystem) {
    const QuietErrors quiet;
    std::array<char, nameSize> labelText{};
    std::array<char, nameSize> fileSystemText{};
    if (GetVolumeInformationA(upToNul(root).c_str(), labelText.data(), nameSize, nullptr, nullptr, nullptr,
                              fileSystemText.data(), nameSize) == FALSE) {
        return false;
    }
    store(utf8FromAnsi(labelText.data()), label);
    store(utf8FromAnsi(fileSystemText.data()), fileSystem);
    return true;
}

bool setVolumeLabel(std::string_view root, std::string_view label, const DriveIdentity& drive) {
    const QuietErrors quiet;
    if (drive && driveIdentity(root) != drive) return false;
    const auto text = exactAnsi(label);
    return text && SetVolumeLabelA(upToNul(root).c_str(), text->c_str()) != FALSE;
}

/// A user who may not open the volume itself has to do with each file having been flushed by itself.
bool settleVolume(std::string_view root) {
    const QuietErrors quiet;
    const std::string rootPath = upToNul(root);
    if (GetFileAttributesA(rootPath.c_str()) == INVALID_FILE_ATTRIBUTES) return false;
    const std::string device = R"(\\.\)" + rootPath.substr(0, 2);
    const UniqueHandle volume(CreateFileA(device.c_str(), GENERIC_READ | GENERIC_WRITE,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                                          nullptr));
    if (!volume || FlushFileBuffers(volume.get()) != FALSE) return true;
    const DWORD error = GetLastError();
    return error == ERROR_ACCESS_DENIED || error == ERROR_INVALID_FUNCTION || error == ERROR_NOT_SUPPORTED;
}

std::string missingDriveService() {
    return {};
}

void releaseVolumes() {}

} // namespace platform
