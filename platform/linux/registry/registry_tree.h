// The registry in memory. A key is known by its number, which is never given to another one.
#pragma once

#include "platform/linux/registry/registry_record.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace platform::linux {

/// Text in which letters that differ in case only are the same: Windows-1252, as Windows compares names.
std::string registryFolded(std::string_view name);

class RegistryTree {
public:
    using Number = std::uint64_t;

    struct Value {
        std::string name;
        std::uint32_t type = 0;
        std::string data;
    };
    struct Key {
        std::string name;
        Number parent = 0;
        std::map<std::string, Number> subkeys; ///< by folded name
        std::map<std::string, Value> values;   ///< by folded name
    };

    /// Keys 0 to rootCount - 1 are the predefined keys; no other key has such a number.
    static constexpr Number rootCount = 4;

    /// Has the predefined keys only.
    RegistryTree();

    /// Null when there is no such key (any more).
    const Key* key(Number number) const;
    /// Null when there is no such value; `key` must exist.
    const Value* value(Number key, std::string_view name) const;

    /// The number for the next new key. In a registry that never had a key it comes from the clock, so that a
    /// handle to a key of a registry whose file somebody deleted cannot come to mean a key of its successor.
    Number nextNumber() const;

    /// Carries a change out; false, and nothing happens, when it does not fit (an unknown key, a name that is
    /// taken, a number that was given before).
    bool apply(const RegistryRecord& record);

    /// The lines that make this tree of an empty one.
    std::string lines() const;

private:
    bool createKeys(const RegistryRecord& record);
    bool setValue(const RegistryRecord& record);
    bool deleteKey(Number number);

    std::map<Number, Key> keys_;
    Number next_ = rootCount;
};

} // namespace platform::linux
