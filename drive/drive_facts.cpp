// Sizes, label and file system of a drive.

#include "drive/cDrive.h"

#include <array>

namespace {

constexpr std::size_t nameBufferSize = 256;

std::string untilNul(const std::array<char, nameBufferSize>& buffer) {
    const std::string_view text(buffer.data(), buffer.size());
    return std::string(text.substr(0, text.find('\0')));
}

} // namespace

double cDrive::mp_BytesToDouble(const platform::DiskFreeSpace::Bytes& bytes) {
    double value = 0;
    double factor = 1;
    for (const std::uint8_t byte : bytes) {
        value += byte * factor;
        factor *= 256;
    }
    return value;
}

void cDrive::mp_GetDiskSpace(const std::string& sDrive) {
    platform::DiskFreeSpace space;
    platform::diskFreeSpace(sDrive, space);
    totalSpace_ = mp_BytesToDouble(space.total);
    totalFreeSpace_ = mp_BytesToDouble(space.totalFree);
}

std::string cDrive::mp_GetDriveName(const std::string& Drive) {
    std::array<char, nameBufferSize> label{};
    std::array<char, nameBufferSize> fileSystem{};
    platform::volumeInformation(Drive, label, fileSystem);
    fileSystem_ = untilNul(fileSystem);
    return untilNul(label);
}

bool cDrive::mp_SetDriveName(const std::string& Drive, const std::string& Name) {
    return !shownStick_ || platform::setVolumeLabel(Drive, Name, shownStick_);
}
