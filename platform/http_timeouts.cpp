#include "platform/http_timeouts.h"

namespace platform {

HttpTimeouts& httpTimeouts() {
    static HttpTimeouts timeouts;
    return timeouts;
}

} // namespace platform
