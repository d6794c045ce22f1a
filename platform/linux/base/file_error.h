#pragma once

#include "platform/files.h"

namespace platform::linux {

/// What an error number of a file operation means to the program. ENOENT counts as a file that is not found.
FileResult fileResult(int error);

} // namespace platform::linux
