// This process's rights, and the same program once more with those of an administrator.
#pragma once

#include "platform/windows/unique_handle.h"

#include <string>

#include <windows.h>

namespace fat32format {

/// Whether this process may do what administrators may; false when it cannot be told.
/// https://learn.microsoft.com/windows/win32/api/winnt/ne-winnt-token_information_class
bool isElevated();

/// Path of the file that a process was started from; empty when it cannot be told. The handle stays the
/// caller's. The form is 0, a path that a program can be started by, or PROCESS_NAME_NATIVE, which is the
/// same for users whose drives have other letters.
/// https://learn.microsoft.com/windows/win32/api/winbase/nf-winbase-queryfullprocessimagenamew
std::wstring imageOf(HANDLE process, DWORD form);

struct Started {
    platform::windows::UniqueHandle process; ///< none when it could not be started
    DWORD error = 0;                         ///< why; ERROR_CANCELLED when the user has said no
};

/// Starts the file that this process was started from, and no other, as an administrator, without a window of
/// its own. Windows asks the user first, which may take minutes.
/// https://learn.microsoft.com/windows/win32/api/shellapi/nf-shellapi-shellexecuteexw
Started startElevated(const std::wstring& parameters);

} // namespace fat32format
