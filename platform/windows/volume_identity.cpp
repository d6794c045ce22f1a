#include "platform/windows/volume_identity.h"

#include "platform/windows/storage_device.h"
#include "platform/windows/unique_handle.h"

#include <windows.h>
#include <winioctl.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <optional>
#include <string_view>

namespace platform::windows {

namespace {

constexpr const char* noSerial = "-";

/// Whether the error says that there is no such drive, or no medium in it.
bool meansMissing(DWORD error) {
    constexpr DWORD noSuchDevice = 433; // not every header has a name for it
    constexpr std::array<DWORD, 13> missing = {
        ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND, ERROR_INVALID_DRIVE,        ERROR_NOT_READY,
        ERROR_BAD_UNIT,       ERROR_DEV_NOT_EXIST,  ERROR_BAD_NETPATH,          ERROR_BAD_NET_NAME,
        ERROR_INVALID_NAME,   noSuchDevice,         ERROR_DEVICE_NOT_CONNECTED, ERROR_NO_MEDIA_IN_DRIVE,
        ERROR_DEVICE_REMOVED};
    return std::find(std::begin(missing), std::end(missing), error) != std::end(missing);
}

/// The serial number that formatting gave the volume, "-" when it has no file system or one that is locked;
/// no value without a medium.
std::optional<std::string> volumeSerial(const std::string& root) {
    DWORD serial = 0;
    if (GetVolumeInformationA(root.c_str(), nullptr, 0, &serial, nullptr, nullptr, nullptr, 0) == FALSE) {
        if (meansMissing(GetLastError())) return std::nullopt;
        return noSerial;
    }
    // Not every system finds the medium missing when it is asked for the serial number.
    if (GetFileAttributesA(root.c_str()) == INVALID_FILE_ATTRIBUTES && meansMissing(GetLastError()))
        return std::nullopt;
    return std::to_string(serial);
}

std::string deviceNumber(HANDLE device) {
    STORAGE_DEVICE_NUMBER number{};
    if (!askDevice(device, IOCTL_STORAGE_GET_DEVICE_NUMBER, number)) return {};
    return std::to_string(number.DeviceType) + '.' + std::to_string(number.DeviceNumber) + '.' +
           std::to_string(number.PartitionNumber);
}

std::string geometry(HANDLE device) {
    DISK_GEOMETRY disk{};
    if (!askDevice(device, IOCTL_DISK_GET_DRIVE_GEOMETRY, disk)) return {};
    return std::to_string(disk.Cylinders.QuadPart) + '.' + std::to_string(disk.TracksPerCylinder) + '.' +
           std::to_string(disk.SectorsPerTrack) + '.' + std::to_string(disk.BytesPerSector);
}

} // namespace

std::string volumeIdentity(char letter) {
    const std::string root = {letter, ':', '\\'};
    const auto serial = volumeSerial(root);
    if (!serial) return {};
    const UniqueHandle device = openToAsk(letter);
    std::string facts;
    if (device)
        for (const std::string& fact :
             {deviceNumber(device.get()), geometry(device.get()), storageTexts(device.get()).serial})
            facts += '\n' + fact;
    const bool tellsNothing = *serial == noSerial && facts.find_first_not_of('\n') == std::string::npos;
    return tellsNothing ? std::string() : *serial + facts;
}

} // namespace platform::windows
