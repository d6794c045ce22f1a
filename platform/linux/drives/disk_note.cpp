#include "platform/linux/drives/disk_note.h"

#include "platform/linux/base/percent_text.h"

#include <filesystem>
#include <fstream>

namespace platform::linux {

namespace {

/// The kernel counts in these whatever the disk's own sectors are.
constexpr std::uint64_t kernelSector = 512;

/// Bytes; 0 when there is no such device.
std::uint64_t diskSize(std::uint64_t deviceNumber, const std::string& devices) {
    std::string device = shownDevice(deviceNumber, devices);
    std::error_code error;
    if (std::filesystem::exists(device + "/partition", error)) device += "/..";
    std::uint64_t sectors = 0;
    std::ifstream(device + "/size") >> sectors;
    return sectors * kernelSector;
}

} // namespace

std::string diskNote(std::uint64_t deviceNumber, std::string_view serial, const std::string& devices) {
    const std::string sequence = diskSequence(deviceNumber, devices);
    const std::uint64_t size = diskSize(deviceNumber, devices);
    if (sequence.empty() || size == 0) return {};
    return "sequence=" + sequence + ",size=" + std::to_string(size) + ",serial=" + percentEncoded(serial);
}

} // namespace platform::linux
