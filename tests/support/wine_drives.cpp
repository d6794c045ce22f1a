#include "tests/support/wine_drives.h"

#include <winioctl.h>

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace wine {

namespace {

constexpr DWORD defineRequest = CTL_CODE('m', 32, METHOD_BUFFERED, FILE_READ_ACCESS | FILE_WRITE_ACCESS);

/// What the mount manager is told; offsets count from the beginning, 0 for none.
struct DriveRecord {
    ULONG size;
    ULONG type; ///< DRIVE_NO_ROOT_DIR takes the drive away
    ULONG fileSystem;
    DWORD serial;
    ULONGLONG device;
    WCHAR letter;
    USHORT folderOffset;
    USHORT deviceOffset;
    USHORT labelOffset;
};

} // namespace

void defineDrive(char letter, ULONG type, const std::string& hostFolder) {
    DriveRecord record{};
    record.type = type;
    record.letter = static_cast<WCHAR>(letter);
    record.size = static_cast<ULONG>(sizeof record + hostFolder.size() + 1);
    if (!hostFolder.empty()) record.folderOffset = sizeof record;
    std::vector<char> message(record.size);
    std::copy_n(reinterpret_cast<const char*>(&record), sizeof record, message.begin());
    std::copy(hostFolder.begin(), hostFolder.end(), message.begin() + sizeof record);

    const HANDLE manager =
        CreateFileA("\\\\.\\MountPointManager", GENERIC_READ | GENERIC_WRITE,
                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    DWORD returned = 0;
    const BOOL done =
        DeviceIoControl(manager, defineRequest, message.data(), record.size, nullptr, 0, &returned, nullptr);
    CloseHandle(manager);
    if (done == FALSE) throw std::runtime_error(std::string("the drive cannot be defined: ") + letter);
}

void undefineDrive(char letter) {
    defineDrive(letter, DRIVE_NO_ROOT_DIR, {});
}

} // namespace wine
