#pragma once

#include "platform/files.h"

namespace platform::windows {

/// Translates a system error code; 0 is Ok.
/// https://learn.microsoft.com/windows/win32/debug/system-error-codes
FileResult fileResult(unsigned long error);

} // namespace platform::windows
