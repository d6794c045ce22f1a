// Files from the update server, and to the stick. What is read and written are bytes: a file reaches the
// stick exactly as the server has it.
#pragma once

#include "platform/drive_identity.h"

#include <cstdint>
#include <string>
#include <string_view>

class frmMain;

namespace online {

/// Fetches one file and returns its bytes; none when nothing could be read. `downtype` says what is shown
/// meanwhile: "1" firmware and "2" settings show a growing row of dots in panel 2 of the window's status bar
/// and let window events run after every read; "0", and every other number, nothing. `OpenType` is the access
/// type of the connection, 0 for the system's proxy settings. Throws toolkit::RuntimeError: TypeMismatch when
/// `downtype` is no number, Overflow when a file that is fetched without dots needs more than 32767 reads of
/// 2048 bytes.
std::string OpenURL(frmMain& window, std::string_view URL, std::string_view downtype,
                    std::int32_t OpenType = 0);

/// True when the path exists and is neither a folder nor a volume label. Never fails.
bool FileExists(std::string_view Path);

/// The whole file; empty for an empty or missing one. Throws toolkit::RuntimeError when it cannot be read.
std::string ReadFile(std::string_view Path);

/// Writes the file, unless it holds exactly this already, to spare the stick. Throws toolkit::RuntimeError
/// when it cannot be written, or when the path leads to another drive than the given one (DiskNotReady).
void WriteFile(std::string_view Path, std::string_view Text, const platform::DriveIdentity& Drive = {});

} // namespace online
