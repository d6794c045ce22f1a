#pragma once

#include "tools/fat32format/windows/device.h"

namespace fat32format {

/// The machine that this program runs on.
Machine& thisMachine();

} // namespace fat32format
