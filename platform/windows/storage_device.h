// What the device behind a drive letter says of itself.
#pragma once

#include "platform/windows/unique_handle.h"

#include <windows.h>

#include <span>
#include <string>

namespace platform::windows {

/// Opens the device of that letter for questions, for which nobody needs a right to read it.
UniqueHandle openToAsk(char letter);

/// One question without an argument; false when it has no complete answer.
template <typename Answer>
bool askDevice(HANDLE device, DWORD question, Answer& answer) {
    DWORD size = 0;
    return DeviceIoControl(device, question, nullptr, 0, &answer, sizeof answer, &size, nullptr) != FALSE &&
           size >= sizeof answer;
}

/// Texts that the manufacturer gave the disk, as they are; empty for those that it has not.
struct StorageTexts {
    std::string maker;
    std::string model;
    std::string serial;
};

StorageTexts storageTexts(HANDLE device);
/// Out of what IOCTL_STORAGE_QUERY_PROPERTY has answered.
/// https://learn.microsoft.com/windows/win32/api/winioctl/ns-winioctl-storage_device_descriptor
StorageTexts storageTexts(std::span<const char> answer);

} // namespace platform::windows
