#pragma once

#include <windows.h>

namespace toolkit::win32 {

/// Labels that stand below each other share their room by what their texts need: a long one gets what short
/// ones leave. To be called when the text of the label, or its font, has changed; does nothing for one that
/// stands alone.
void flowLabels(HWND dialog, HWND label);

} // namespace toolkit::win32
