#include "platform/windows/file_error.h"

#include <windows.h>

namespace platform::windows {

namespace {

constexpr DWORD noSuchDevice = 433; ///< ERROR_NO_SUCH_DEVICE, which not every SDK knows: the stick was pulled

} // namespace

FileResult fileResult(unsigned long error) {
    switch (error) {
    case ERROR_SUCCESS:
        return FileResult::Ok;
    case ERROR_FILE_NOT_FOUND:
        return FileResult::FileNotFound;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
    case ERROR_FILE_TOO_LARGE: // FAT ends at 4 GB
        return FileResult::DiskFull;
    case ERROR_ACCESS_DENIED:
    case ERROR_WRITE_PROTECT:
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_USER_MAPPED_FILE:
        return FileResult::PermissionDenied;
    case ERROR_CRC:
    case ERROR_SEEK:
    case ERROR_SECTOR_NOT_FOUND:
    case ERROR_WRITE_FAULT:
    case ERROR_READ_FAULT:
    case ERROR_GEN_FAILURE:
    case ERROR_IO_DEVICE:
    case ERROR_FILE_CORRUPT:
    case ERROR_DISK_CORRUPT:
        return FileResult::DeviceIo;
    case ERROR_INVALID_DRIVE:
    case ERROR_BAD_UNIT:
    case ERROR_NOT_READY:
    case ERROR_WRONG_DISK:
    case ERROR_BAD_NETPATH:
    case ERROR_DEV_NOT_EXIST:
    case ERROR_BAD_NET_NAME:
    case ERROR_UNRECOGNIZED_VOLUME:
    case ERROR_FILE_INVALID: // the medium has been exchanged
    case ERROR_NO_MEDIA_IN_DRIVE:
    case ERROR_DEVICE_NOT_CONNECTED:
    case noSuchDevice:
        return FileResult::DiskNotReady;
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_BAD_PATHNAME:
    case ERROR_FILENAME_EXCED_RANGE:
    case ERROR_DIRECTORY:
        return FileResult::PathNotFound;
    default:
        return FileResult::PathFileAccess;
    }
}

} // namespace platform::windows
