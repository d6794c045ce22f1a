#pragma once

#include <cstdint>
#include <string>

namespace fat32format {

/// Which disk it is, whatever its name: a disk that is plugged in again has another sequence number.
struct DiskIdentity {
    std::uint64_t sequence = 0; ///< among all disks since the start of the system; 0 when not known
    std::uint64_t bytes = 0;    ///< size of the whole disk
    std::string serial;         ///< may be empty
    friend bool operator==(const DiskIdentity&, const DiskIdentity&) = default;
};

} // namespace fat32format
