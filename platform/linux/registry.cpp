#include "platform/registry.h"

#include "platform/linux/base/ansi_case.h"
#include "platform/linux/files/own_folders.h"
#include "platform/linux/registry/registry_store.h"
#include "platform/program_folder.h"

#include <algorithm>
#include <array>
#include <map>

namespace platform {

namespace {

using linux::RegistryNode;
using linux::RegistryStore;
using linux::RegistryValue;
using Names = RegistryNode::Names;

/// https://learn.microsoft.com/windows/win32/sysinfo/registry-element-size-limits
constexpr std::size_t longestKeyName = 255;
constexpr std::size_t longestValueName = 16383;
constexpr std::size_t deepestKey = 512;

constexpr std::uint32_t noRight = 0;
constexpr RegistryKey handleStep = 4;

/// In the order of their handles.
constexpr std::array<const char*, 4> predefinedNames = {"HKEY_CLASSES_ROOT", "HKEY_CURRENT_USER",
                                                        "HKEY_LOCAL_MACHINE", "HKEY_USERS"};

struct OpenKey {
    std::weak_ptr<RegistryNode> key;
    Names names; ///< from the top down
    std::uint32_t rights = 0;
};

RegistryStore& store() {
    // The store saves at its end and needs what this call makes, which is to end later.
    static_cast<void>(programFolder());
    static const std::string folder = linux::userConfigFolder();
    static RegistryStore instance(folder.empty() ? folder : folder + "/registry");
    return instance;
}

std::map<RegistryKey, OpenKey>& handles() {
    static std::map<RegistryKey, OpenKey> open;
    return open;
}

bool isPredefined(RegistryKey key) {
    return key >= registryClassesRoot && key - registryClassesRoot < predefinedNames.size();
}

RegistryKey newHandle(OpenKey key) {
    static RegistryKey last = 0;
    do {
        last += handleStep;
    } while (last == 0 || last >= registryClassesRoot || handles().contains(last));
    handles()[last] = std::move(key);
    return last;
}

std::string untilNul(std::string_view text) {
    return std::string(text.substr(0, text.find('\0')));
}

/// The key that a function is about.
struct Target {
    RegistryNode::Pointer key; ///< null when there is none
    Names names;               ///< from the top down
};

/// What every function begins with: finds the key that a path leads to from a handle that must have a right.
std::int32_t find(RegistryKey handle, std::uint32_t right, std::string_view path, Target& target) {
    const auto open = handles().find(handle);
    if (!isPredefined(handle) && open == handles().end()) return RegistryInvalidHandle;
    if (path.starts_with('\\')) return RegistryBadPathName;
    if (!isPredefined(handle) && (open->second.rights & right) != right) return RegistryAccessDenied;
    const std::int32_t status = store().refresh();
    if (status != RegistrySuccess) return status;
    if (isPredefined(handle)) {
        target.names = {predefinedNames.at(handle - registryClassesRoot)};
        store().top().create(target.names);
        target.key = store().top().find(target.names);
    } else {
        target = {open->second.key.lock(), open->second.names};
        if (!target.key) return RegistryKeyDeleted;
    }
    const Names names = linux::registryNames(untilNul(path));
    if (names.empty()) return RegistrySuccess;
    target.names.insert(target.names.end(), names.begin(), names.end());
    target.key = target.key->find(names);
    return target.key ? RegistrySuccess : RegistryFileNotFound;
}

/// What a change takes in the file at the most: a line for each key and one for the value, each with the
/// whole path, in which every byte may take three.
std::size_t room(const Names& names, const RegistryValue& value = {}) {
    constexpr std::size_t most = 3;
    constexpr std::size_t others = 50; // what a line has beside its texts
    std::size_t path = 0;
    for (const std::string& name : names)
        path += most * (name.size() + 1);
    return (names.size() + 1) * (path + others) + most * (value.name.size() + value.data.size());
}

} // namespace

std::int32_t regOpenKey(RegistryKey key, std::string_view path, std::uint32_t rights, RegistryKey& opened) {
    Target target;
    const std::int32_t status = find(key, noRight, path, target);
    if (status != RegistrySuccess) return status;
    opened = target.names.size() == 1 ? key : newHandle({target.key, target.names, rights});
    return RegistrySuccess;
}

std::int32_t regCreateKey(RegistryKey key, std::string_view path, std::uint32_t options, std::uint32_t rights,
                          RegistryKey& opened, RegistryDisposition& disposition) {
    if (options != registryNonVolatile) return RegistryInvalidParameter;
    Target target;
    std::int32_t status = find(key, noRight, path, target);
    disposition = RegistryOpenedExistingKey;
    if (status == RegistryFileNotFound) {
        const auto isTooLong = [](const std::string& name) { return name.size() > longestKeyName; };
        if (std::any_of(target.names.begin(), target.names.end(), isTooLong)) return RegistryInvalidParameter;
        if (target.names.size() > deepestKey + 1) return RegistryInvalidParameter;
        status = store().change(room(target.names),
                                [names = target.names](RegistryNode& top) { top.create(names); });
        disposition = RegistryCreatedNewKey;
    }
    return status == RegistrySuccess ? regOpenKey(key, path, rights, opened) : status;
}

std::int32_t regFlushKey(RegistryKey key) {
    if (!isPredefined(key) && !handles().contains(key)) return RegistryInvalidHandle;
    return store().flush();
}

std::int32_t regCloseKey(RegistryKey key) {
    if (isPredefined(key)) return RegistrySuccess;
    if (handles().erase(key) == 0) return RegistryInvalidHandle;
    store().saveSoon();
    return RegistrySuccess;
}

std::int32_t regDeleteKey(RegistryKey key, std::string_view path) {
    Target target;
    std::int32_t status = find(key, noRight, path, target);
    if (status != RegistrySuccess) return status;
    if (target.names.size() == 1 || !target.key->subkeys.empty()) return RegistryAccessDenied;
    target.key.reset(); // the tree's is the last one
    status = store().change(0, [names = target.names](RegistryNode& top) { top.remove(names); });
    store().saveSoon();
    return status;
}

std::int32_t regDeleteValue(RegistryKey key, std::string_view name) {
    Target target;
    const std::int32_t status = find(key, RegistrySetValue, {}, target);
    if (status != RegistrySuccess) return status;
    if (target.key->value(untilNul(name)) == nullptr) return RegistryFileNotFound;
    return store().change(
        0, [names = target.names, upper = linux::ansiUpper(untilNul(name))](RegistryNode& top) {
            if (const auto owner = top.find(names)) owner->values.erase(upper);
        });
}

std::int32_t regSetValue(RegistryKey key, std::string_view name, std::uint32_t type, std::string_view data) {
    Target target;
    const std::int32_t status = find(key, RegistrySetValue, {}, target);
    if (status != RegistrySuccess) return status;
    const RegistryValue value = {untilNul(name), type, std::string(data)};
    if (value.name.size() > longestValueName) return RegistryInvalidParameter;
    const RegistryValue* const old = target.key->value(value.name);
    if (old != nullptr && old->type == type && old->data == data) return RegistrySuccess;
    return store().change(room(target.names, value), [names = target.names, value](RegistryNode& top) {
        if (const auto owner = top.find(names)) owner->set(value);
    });
}

std::int32_t regQueryValue(RegistryKey key, std::string_view name, std::uint32_t& type, char* data,
                           std::uint32_t& size) {
    Target target;
    const std::int32_t status = find(key, RegistryQueryValue, {}, target);
    if (status != RegistrySuccess) return status;
    const RegistryValue* const value = target.key->value(untilNul(name));
    if (value == nullptr) return RegistryFileNotFound;
    const bool fits = value->data.size() <= size;
    type = value->type;
    size = static_cast<std::uint32_t>(value->data.size());
    if (data == nullptr) return RegistrySuccess;
    if (!fits) return RegistryMoreData;
    value->data.copy(data, value->data.size());
    return RegistrySuccess;
}

std::size_t openRegistryHandles() {
    return handles().size();
}

} // namespace platform
