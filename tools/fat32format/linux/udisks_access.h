// What a user who is not root may do to a disk, by way of UDisks2, which asks for the password where it is
// needed, and names the disk in its question.
// http://storaged.org/doc/udisks2-api/latest/gdbus-org.freedesktop.UDisks2.Block.html
#pragma once

#include "platform/linux/base/unique_fd.h"
#include "tools/fat32format/system.h"

#include <string>

namespace fat32format {

struct OpenedNode {
    Opened::Outcome outcome = Opened::Outcome::Failed;
    platform::linux::UniqueFd device;
    std::string reason; ///< why it is not open; may be empty
};

/// `flags` are those of open(2), O_RDONLY or O_RDWR and perhaps O_EXCL.
OpenedNode openThroughUdisks(const std::string& node, int flags);
bool unmountThroughUdisks(const std::string& node);
/// Has the disk's table read anew, if that takes no password.
void rescanThroughUdisks(const std::string& node);

} // namespace fat32format
