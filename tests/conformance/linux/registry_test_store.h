// Short words for what the tests of the registry's file do all the time.
#pragma once

#include "platform/linux/registry/registry_store.h"
#include "platform/linux/registry/registry_text.h"
#include "platform/registry.h"
#include "tests/conformance/linux/temporary_folder.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace conformance {

using platform::linux::RegistryNode;
using platform::linux::RegistryStore;
using Names = RegistryNode::Names;

/// The key of the current user, where the tests work.
inline const Names userKey = {"HKEY_CURRENT_USER"};

/// A configuration folder of the test's own, in which the program's does not exist yet.
class RegistryFolder {
public:
    RegistryFolder() { setenv("XDG_CONFIG_HOME", config().c_str(), 1); }

    const std::filesystem::path& outside() const { return folder_.path(); }
    std::filesystem::path config() const { return folder_.path() / "config"; }
    std::filesystem::path file() const { return config() / "orvanta-usbtool" / "registry"; }

private:
    TemporaryFolder folder_;
};

inline std::string contentsOf(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline void writeContents(const std::filesystem::path& file, const std::string& contents) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << contents;
}

/// Makes a change, which is not saved yet.
inline std::int32_t change(RegistryStore& store, const RegistryStore::Change& work) {
    const std::int32_t status = store.refresh();
    return status != 0 ? status : store.change(100, work);
}

/// Makes a change and saves it.
inline std::int32_t changeSaved(RegistryStore& store, const RegistryStore::Change& work) {
    const std::int32_t status = change(store, work);
    return status != 0 ? status : store.flush();
}

/// A binary value of a key that is there, or that is created.
inline RegistryStore::Change valueChange(const std::string& name, const std::string& data,
                                         const Names& key = userKey) {
    return [=](RegistryNode& top) { top.create(key).set({name, platform::RegistryBinary, data}); };
}

inline std::int32_t setValue(RegistryStore& store, const std::string& name, const std::string& data,
                             const Names& key = userKey) {
    return changeSaved(store, valueChange(name, data, key));
}

inline std::int32_t createKey(RegistryStore& store, const Names& key) {
    return changeSaved(store, [=](RegistryNode& top) { top.create(key); });
}

inline std::int32_t deleteKey(RegistryStore& store, const Names& key) {
    return changeSaved(store, [=](RegistryNode& top) { top.remove(key); });
}

/// A value's data; "(none)" without such a value, "(status)" when the registry cannot be read.
inline std::string valueOf(RegistryStore& store, const std::string& name, const Names& key = userKey) {
    const std::int32_t status = store.refresh();
    if (status != 0) return "(" + std::to_string(status) + ")";
    const auto owner = store.top().find(key);
    const auto* const value = owner ? owner->value(name) : nullptr;
    return value != nullptr ? value->data : "(none)";
}

/// All there is, in a form that compares.
inline std::string allOf(RegistryStore& store) {
    return store.refresh() == 0 ? platform::linux::registryText(store.top()) : std::string();
}

/// Names of the files beside the registry's own and its lock.
inline std::vector<std::string> filesBeside(const std::filesystem::path& file) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(file.parent_path())) {
        const std::string name = entry.path().filename();
        if (name != file.filename() && name != file.filename().string() + ".lock") names.push_back(name);
    }
    return names;
}

} // namespace conformance
