#pragma once

#include "app/program.h"

namespace drive {

/// A device was plugged in: the drives are scanned and the stick is shown.
void deviceArrived(app::Program& program);

/// A device was pulled out: no stick is shown, even when another one is still there, until the next arrival
/// or search.
void deviceRemoved(app::Program& program);

} // namespace drive
