// Messages about devices, as a window's procedure receives them.
#pragma once

#include <cstdint>
#include <functional>

namespace platform {

/// A window's procedure. Windows: `WNDPROC`.
using WindowProcedure = std::intptr_t (*)(std::intptr_t window, std::uint32_t message, std::uintptr_t wParam,
                                          std::intptr_t lParam);

/// Makes `next` the window's procedure and returns the previous one, which is never null. Windows: `SetWindowLongA`,
/// GWL_WNDPROC.
WindowProcedure setWindowProcedure(std::intptr_t window, WindowProcedure next);

/// Windows: `CallWindowProcA`.
std::intptr_t callWindowProcedure(WindowProcedure previous, std::intptr_t window, std::uint32_t message,
                                  std::uintptr_t wParam, std::intptr_t lParam);

} // namespace platform
