#pragma once

#include "platform/linux/files/path.h"

#include <string_view>

namespace platform::linux {

/// Puts new contents in the place of a file in such a way that, whatever happens, the file has either the old
/// ones or the new ones: they are written to a file beside it, brought onto the medium, and then given the
/// file's name. So the file's folder must be writable, too. Owner, permissions and attributes stay as far as
/// the user may set them.
class FileReplacement {
public:
    /// `mode` are the permissions of a file that does not exist yet, less what the user's mask takes away.
    explicit FileReplacement(std::string_view path, const DriveIdentity& drive = {}, mode_t mode = 0666);

    bool exists() const { return place_.isFile(); }

    /// Ok, or why it cannot be done: the path names no file, the file is read-only, or its folder does not
    /// exist or may not be written.
    FileResult possible() const { return possible_; }

    /// Only when it is possible. When it fails, the file is what it was, or, when the medium failed at the
    /// very end, either of both.
    FileResult replace(std::string_view contents);

private:
    FileResult prepare(std::string_view path, const DriveIdentity& drive);
    FileResult enterLinkedFolder();

    Place place_;
    mode_t mode_;
    FileResult possible_;
};

} // namespace platform::linux
