// Short words for what the tests of the registry's file do all the time.
#pragma once

#include "platform/linux/registry/registry_store.h"
#include "platform/registry.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace conformance {

using platform::linux::RegistryRecord;
using platform::linux::RegistryStore;
using platform::linux::RegistryTree;

/// The key of the current user, where the tests work.
constexpr RegistryTree::Number userKey = 1;

inline std::string contentsOf(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline void writeContents(const std::filesystem::path& file, const std::string& contents) {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << contents;
}

/// Sets a binary value of a key.
inline std::int32_t setValue(RegistryStore& store, const std::string& name, const std::string& data,
                             RegistryTree::Number key = userKey) {
    return store.change([&](const RegistryTree&, std::optional<RegistryRecord>& record) -> std::int32_t {
        record = RegistryRecord{RegistryRecord::Kind::Value, key, platform::RegistryBinary, {name, data}};
        return 0;
    });
}

/// Creates a chain of keys below the current user's and returns the number of the first.
inline RegistryTree::Number createKeys(RegistryStore& store, const std::vector<std::string>& names) {
    RegistryTree::Number number = 0;
    store.change([&](const RegistryTree& tree, std::optional<RegistryRecord>& record) -> std::int32_t {
        number = tree.nextNumber();
        record = RegistryRecord{RegistryRecord::Kind::Key, number, userKey, names};
        return 0;
    });
    return number;
}

inline std::int32_t deleteKey(RegistryStore& store, RegistryTree::Number number) {
    return store.change([&](const RegistryTree&, std::optional<RegistryRecord>& record) -> std::int32_t {
        record = RegistryRecord{RegistryRecord::Kind::NoKey, number, 0, {}};
        return 0;
    });
}

/// A value's data; "(none)" without such a value, "(status)" when the registry cannot be read.
inline std::string valueOf(RegistryStore& store, const std::string& name,
                           RegistryTree::Number key = userKey) {
    std::string data = "(none)";
    const std::int32_t status = store.read([&](const RegistryTree& tree) -> std::int32_t {
        const auto* const value = tree.key(key) == nullptr ? nullptr : tree.value(key, name);
        if (value != nullptr) data = value->data;
        return 0;
    });
    return status == 0 ? data : "(" + std::to_string(status) + ")";
}

/// All there is, in a form that compares.
inline std::string allOf(RegistryStore& store) {
    std::string lines;
    store.read([&](const RegistryTree& tree) -> std::int32_t {
        lines = tree.lines();
        return 0;
    });
    return lines;
}

} // namespace conformance
