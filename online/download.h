// Files from the update server, and to the stick. What is read and written are bytes: a file reaches the
// stick exactly as the server has it.
#pragma once

#include "platform/drive_identity.h"
#include "toolkit/progress_bar.h"
#include "toolkit/status_bar.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace online {

/// Where a file is meant to go.
struct Destination {
    std::string path;
    std::uint64_t room; ///< bytes that it may have
};

/// Where a download shows how it goes.
struct Display {
    toolkit::StatusPanel& panel;
    toolkit::ProgressBar& bar;
};

/// What came of a download.
struct Received {
    std::string contents;
    bool complete = false;                  ///< all of it came, as far as the server tells
    std::optional<std::uint64_t> announced; ///< length in bytes that the server named

    /// Some of the file had come, or been announced, and then no more.
    bool isCut() const { return !complete && (!contents.empty() || announced); }
};

/// Fetches one file and returns its bytes; none when nothing could be read. `downtype` says what is shown
/// meanwhile: "1" firmware and "2" settings show a growing row of dots in the display's panel, and in its bar
/// how far they have come, and let window events run after every read; "0", and every other number, nothing.
/// What was shown last stays. `OpenType` is the access
/// type of the connection, 0 for the system's proxy settings. What came before the connection was lost is
/// returned, too; but a file that is fetched without dots counts only as a whole, and is empty then. Throws
/// base::RuntimeError: TypeMismatch when `downtype` is no number, Overflow when a file that is fetched
/// without dots needs more than 32767 reads of 2048 bytes, DiskFull with the path as soon as it is known that
/// the file has more bytes than `destination` has room for.
std::string OpenURL(const Display& display, std::string_view URL, std::string_view downtype,
                    std::int32_t OpenType = 0, const std::optional<Destination>& destination = {});

/// The same for a file that may be cut, with what there is to know of that.
Received OpenFile(const Display& display, std::string_view URL, std::string_view downtype,
                  const Destination& destination);

/// Fetches one of the server's text files, as OpenURL() does without dots. Empty when nothing could be read;
/// no value when the answer was cut off. The bar tells when the server says nothing.
std::optional<std::string> OpenTextFile(toolkit::ProgressBar& bar, std::string_view URL);

/// True when the path exists and is neither a folder nor a volume label. Never fails.
bool FileExists(std::string_view Path);

/// The whole file; empty for an empty or missing one. Throws base::RuntimeError when it cannot be read.
std::string ReadFile(std::string_view Path);

/// Writes the file, unless it holds exactly this already, as its medium has it, to spare the stick; tells
/// whether it wrote. Throws base::RuntimeError when it cannot be written, or when the path leads to another
/// drive than the given one (DiskNotReady).
bool WriteFile(std::string_view Path, std::string_view Text, const platform::DriveIdentity& Drive = {});

} // namespace online
