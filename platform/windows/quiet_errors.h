#pragma once

#include <windows.h>

namespace platform::windows {

/// While it lives this thread's accesses to drives fail without a system box such as "no disk in the drive".
/// https://learn.microsoft.com/windows/win32/api/errhandlingapi/nf-errhandlingapi-setthreaderrormode
class QuietErrors {
public:
    QuietErrors() { SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &previous_); }
    QuietErrors(const QuietErrors&) = delete;
    QuietErrors& operator=(const QuietErrors&) = delete;
    ~QuietErrors() { SetThreadErrorMode(previous_, nullptr); }

private:
    DWORD previous_ = 0;
};

} // namespace platform::windows
