#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace fat32format {

/// Which disk it is, whatever its name: a disk that is plugged in again has another sequence number.
struct DiskIdentity {
    std::uint64_t sequence = 0; ///< among all disks since the start of the system; 0 when not known
    std::uint64_t bytes = 0;    ///< size of the whole disk
    std::string serial;         ///< may be empty
    friend bool operator==(const DiskIdentity&, const DiskIdentity&) = default;
};

/// Reads "sequence=7,size=500107862016,serial=0123%20A": decimal numbers, the serial in UTF-8 with everything
/// that is special as "%XX". No value when the text is anything else, or names no disk at all.
std::optional<DiskIdentity> parseIdentity(std::string_view text);

} // namespace fat32format
