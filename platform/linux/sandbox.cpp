#include "platform/sandbox.h"

#include <unistd.h>

namespace platform {

bool isSandboxed() {
    return access("/.flatpak-info", F_OK) == 0;
}

} // namespace platform
