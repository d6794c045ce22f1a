// The desktop portal's question which program shall open a file.
#pragma once

namespace platform::linux {

/// Asks for a program for an open file (which stays the caller's); false when there is no portal, or it does
/// not take the request within two seconds. Does not wait for the answer. org.freedesktop.portal.OpenURI,
/// `OpenFile`, https://flatpak.github.io/xdg-desktop-portal/docs/doc-org.freedesktop.portal.OpenURI.html
bool askPortalToOpen(int file);

} // namespace platform::linux
