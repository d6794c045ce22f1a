#include "platform/sandbox.h"

namespace platform {

bool isSandboxed() {
    return false;
}

} // namespace platform
