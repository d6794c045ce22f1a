// The program's place in the desktop's taskbar, dock or launcher.
#pragma once

#include <cstdint>

namespace platform {

enum class TaskbarProgress {
    None,
    KnownShare,
    UnknownShare, ///< something is done; a desktop that cannot show that shows nothing
};

/// Shows there how far something has come; `share` is 0 to 1 and counts with a known one. `window` is the
/// handle of the window that it happens in; its owner's place is meant when it has one. False when there is
/// no such desktop. Windows: `ITaskbarList3`,
/// https://learn.microsoft.com/windows/win32/api/shobjidl_core/nn-shobjidl_core-itaskbarlist3
bool showInTaskbar(std::intptr_t window, TaskbarProgress progress, double share);

} // namespace platform
