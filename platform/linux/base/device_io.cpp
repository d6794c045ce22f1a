#include "platform/linux/base/device_io.h"

#include <cerrno>
#include <unistd.h>

namespace platform::linux {

namespace {

/// One step after the other; each does what it can from a position on.
bool transferAll(std::size_t size, auto step) {
    for (std::size_t done = 0; done < size;) {
        const ssize_t count = step(done);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        done += static_cast<std::size_t>(count);
    }
    return true;
}

} // namespace

bool readAt(int device, std::uint64_t offset, std::span<std::uint8_t> bytes) {
    return transferAll(bytes.size(), [&](std::size_t done) {
        return pread(device, bytes.data() + done, bytes.size() - done, static_cast<off_t>(offset + done));
    });
}

bool writeAt(int device, std::uint64_t offset, std::span<const std::uint8_t> bytes) {
    return transferAll(bytes.size(), [&](std::size_t done) {
        return pwrite(device, bytes.data() + done, bytes.size() - done, static_cast<off_t>(offset + done));
    });
}

} // namespace platform::linux
