// The registry in memory: a tree of keys, each with values. Names are found regardless of case.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace platform::linux {

/// The names of a path; several separators in a row, and those at its ends, count as one, or none.
std::vector<std::string> registryNames(std::string_view path);

struct RegistryValue {
    std::string name; ///< as it was first set
    std::uint32_t type = 0;
    std::string data;
};

/// A key. It lives as long as the tree has it, so whoever has it open knows by a weak pointer that it has
/// been deleted. Paths are relative to the key that is asked.
struct RegistryNode {
    using Pointer = std::shared_ptr<RegistryNode>;
    using Names = std::vector<std::string>;

    std::string name = {};                            ///< as it was created
    std::map<std::string, Pointer> subkeys = {};      ///< by name in capitals
    std::map<std::string, RegistryValue> values = {}; ///< by name in capitals

    /// The key at the end of one or more names; null when there is none.
    Pointer find(const Names& names) const;
    /// Null when there is no such value.
    const RegistryValue* value(std::string_view valueName) const;

    /// The key at the end of the names, created with those above it that are missing.
    RegistryNode& create(const Names& names);
    /// Nothing happens when there is no such key, or when it has subkeys.
    void remove(const Names& names);
    void set(const RegistryValue& value);

    /// Takes the contents of another one over. A key that both have stays the same object, with all below it.
    void become(RegistryNode&& other);
};

} // namespace platform::linux
