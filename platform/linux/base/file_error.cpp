#include "platform/linux/base/file_error.h"

#include <cerrno>

namespace platform::linux {

FileResult fileResult(int error) {
    switch (error) {
    case 0:
        return FileResult::Ok;
    case ENOENT:
        return FileResult::FileNotFound;
    case ENOSPC:
    case EDQUOT:
    case EFBIG: // FAT ends at 4 GB
        return FileResult::DiskFull;
    case EROFS:
    case EACCES:
    case EPERM:
    case ETXTBSY:
    case EBUSY:
    case EAGAIN: // somebody else holds the file
        return FileResult::PermissionDenied;
    case EIO:
    case EUCLEAN: // the file system found itself damaged
        return FileResult::DeviceIo;
    case ENODEV:
    case ENXIO:
    case ENOMEDIUM:
    case ENOTCONN:
    case ESTALE:
        return FileResult::DiskNotReady;
    case ENOTDIR:
    case ELOOP:
    case ENAMETOOLONG:
    case EINVAL: // FAT's answer to a name that it cannot store
    case EILSEQ:
        return FileResult::PathNotFound;
    default: // EISDIR, EEXIST, no memory, no file numbers left
        return FileResult::PathFileAccess;
    }
}

} // namespace platform::linux
