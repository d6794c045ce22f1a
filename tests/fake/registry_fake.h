// The registry of the computer in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace fake {

struct RegistryValue {
    std::uint32_t type = 0;
    std::string data;
};

struct OpenRegistryKey {
    std::string path;
    std::uint32_t rights = 0;
};

struct Registry {
    /// Values by name, of keys by their path with the root's number in front: `80000001\Software`. No case
    /// folding.
    std::map<std::string, std::map<std::string, RegistryValue>> keys;
    std::map<std::uint32_t, OpenRegistryKey> handles;

    std::int32_t flushStatus = 0;
    std::int32_t closeStatus = 0; ///< other than 0, the handle stays open
    std::int32_t setStatus = 0;   ///< other than 0, nothing is set
    /// What the queries that ask for data come to.
    std::int32_t dataStatus = 0;

    std::vector<std::string> calls;     ///< "open 25", "create 63 option 0", "flush", "set", "close", ...
    std::vector<std::uint32_t> buffers; ///< sizes that queries for data named
};

Registry& registry();
void resetRegistry();

} // namespace fake
