#include "toolkit/clock.h"

#include "toolkit/backend.h"

namespace toolkit {

std::chrono::steady_clock::time_point now() {
    return backend::now();
}

} // namespace toolkit
