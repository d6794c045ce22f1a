// The steps that reading, writing and copying a file are made of.
#pragma once

#include "platform/files.h"
#include "platform/linux/base/unique_fd.h"
#include "platform/linux/files/path.h"

#include <cstdint>

namespace platform::linux {

/// An open folder, also one opened with O_PATH, which whoever opened it closes.
struct Folder {
    Folder() = default;
    explicit Folder(int number);

    int file = -1;
    bool isFat = false;
};

/// Attributes of what `name` is in the folder; `info` are its facts. On FAT the stored ones, else made up
/// from the permissions and the name.
std::uint32_t attributesOf(const Place& place);
std::uint32_t attributesOf(const Folder& folder, const char* name, const struct stat& info);

/// Opens a plain file to read it. Never waits: what only looks like a file (a pipe, a device) is refused.
FileResult openToRead(const Place& place, UniqueFd& file);

/// Opens a plain file to write it, created when it is missing, its contents left alone. A read-only file is
/// refused even to those whom the system would let pass.
FileResult openToWrite(const Place& place, UniqueFd& file);

/// Takes a file's attributes that keep it from being written over, or hide it, away: the stored ones on FAT,
/// else the missing right of its owner to write. Whether that succeeded, opening it will tell.
void clearAttributes(Place& place);

/// Gives a file the attributes, or the permissions, of another, as far as its file system keeps them; its
/// owner may write it, whatever the other one says.
FileResult copyAttributes(int from, const Place& source, int to);

/// Whether a file has what copyAttributes() would give it.
bool hasCopiedAttributes(int file, int from, const Place& source);

} // namespace platform::linux
