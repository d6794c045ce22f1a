#pragma once

namespace platform {

/// Whether the program runs in a sandbox, which lets it have what it was given and no disk as such: that of a
/// Flatpak, https://docs.flatpak.org/en/latest/sandbox-permissions.html. Windows: there is none.
bool isSandboxed();

} // namespace platform
