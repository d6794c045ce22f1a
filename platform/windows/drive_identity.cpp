#include "platform/drive_identity.h"
#include "base/letters.h"

#include "platform/windows/quiet_errors.h"
#include "platform/windows/volume_identity.h"

#include <windows.h>

namespace platform {

using namespace windows;

DriveIdentity driveIdentity(std::string_view root) {
    const QuietErrors quiet;
    root = root.substr(0, root.find('\0'));
    if (root.size() == 3 && (root[2] == '\\' || root[2] == '/')) root.remove_suffix(1);
    if (root.size() != 2 || root[1] != ':' || !base::isLetter(root[0])) return {};
    return {volumeIdentity(root[0])};
}

} // namespace platform
