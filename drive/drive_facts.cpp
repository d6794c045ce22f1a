// Sizes, label and file system of a drive.

#include "drive/drive_facts.h"

#include "drive/cDrive.h"
#include "platform/number_text.h"

#include <array>
#include <cmath>

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

std::string drive::factsOf(cDrive& drive, const std::string& root) {
    constexpr double MB = 1024.0 * 1024.0;
    constexpr double GB = 1024.0 * MB;
    drive.mp_GetDiskSpace(root);
    const double total = drive.TotalSpace();
    const std::string size = total < GB ? std::to_string(std::llround(total / MB)) + " MB"
                                        : platform::formatNumber(total / GB, 2) + " GB";
    std::string facts = total > 0 ? "Größe: " + size : std::string();
    const std::string fileSystem = drive.mp_FileSystem();
    if (!facts.empty() && !fileSystem.empty()) facts += ", ";
    return fileSystem.empty() ? facts : facts + "Dateisystem: " + fileSystem;
}
