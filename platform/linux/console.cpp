#include "platform/console.h"

#include <cstdio>

namespace platform {

void print(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

} // namespace platform
