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
    explicit FileReplacement(std::string_view path, const DriveIdentity& drive = {});

    bool exists() const { return place_.isFile(); }

    /// False when the path names no file, the file is read-only, or its folder does not exist.
    bool possible() const { return possible_; }

    /// False when it failed; the file is then what it was, or, when the medium failed at the very end, either
    /// of both.
    bool replace(std::string_view contents);

private:
    bool enterLinkedFolder();

    Place place_;
    bool possible_ = false;
};

} // namespace platform::linux
