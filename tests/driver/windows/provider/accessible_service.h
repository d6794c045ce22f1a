#pragma once

#include <windows.h>

#include <unknwn.h>

namespace provider {

/// The system's service for what screen readers are to say, of which Wine has a stub only. What it is told of
/// a window it leaves there as properties, for the probe. The caller owns it.
IUnknown* makeAccessibleService();

} // namespace provider
