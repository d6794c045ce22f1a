// What the desktop tells a user who works with something else.
#pragma once

#include <cstdint>
#include <string_view>

namespace platform {

/// Has the desktop show a title and a text (UTF-8, no markup) for a while; a later one takes the place of an
/// earlier one. `window` is the handle of the window that it is about. Does not wait. False when there is no
/// desktop to tell. Windows: `Shell_NotifyIconW` with NIF_INFO, for an icon that is there as long as the
/// notification is, https://learn.microsoft.com/windows/win32/shell/notification-area
bool showNotification(std::intptr_t window, std::string_view title, std::string_view text);

} // namespace platform
