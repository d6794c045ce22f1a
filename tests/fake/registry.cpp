#include "registry_fake.h"

#include "platform/registry.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

namespace fake {

namespace {

Registry theRegistry;

} // namespace

Registry& registry() {
    return theRegistry;
}

void resetRegistry() {
    theRegistry = Registry();
}

} // namespace fake

namespace {

using fake::registry;

/// The key's place in the map; empty when the handle is unknown.
std::string pathOf(platform::RegistryKey key, std::string_view path) {
    std::string start;
    if (const auto open = registry().handles.find(key); open != registry().handles.end()) {
        start = open->second.path;
    } else if (key >= platform::registryClassesRoot) {
        std::array<char, 9> digits{};
        static_cast<void>(std::snprintf(digits.data(), digits.size(), "%X", key));
        start = digits.data();
    }
    return path.empty() || start.empty() ? start : start + '\\' + std::string(path);
}

platform::RegistryKey open(const std::string& path, std::uint32_t rights) {
    const auto handle = static_cast<platform::RegistryKey>(100 + registry().calls.size());
    registry().handles[handle] = {path, rights};
    return handle;
}

bool hasRight(platform::RegistryKey key, std::uint32_t right) {
    const auto found = registry().handles.find(key);
    return found == registry().handles.end() || (found->second.rights & right) != 0;
}

void note(const std::string& call) {
    registry().calls.push_back(call);
}

} // namespace

namespace platform {

std::int32_t regOpenKey(RegistryKey key, std::string_view path, std::uint32_t rights, RegistryKey& opened) {
    note("open " + std::to_string(rights));
    const std::string place = pathOf(key, path);
    if (place.empty()) return RegistryInvalidHandle;
    if (!registry().keys.contains(place)) return RegistryFileNotFound;
    opened = open(place, rights);
    return RegistrySuccess;
}

std::int32_t regCreateKey(RegistryKey key, std::string_view path, std::uint32_t options, std::uint32_t rights,
                          RegistryKey& opened, RegistryDisposition& disposition) {
    note("create " + std::to_string(rights) + " option " + std::to_string(options));
    const std::string place = pathOf(key, path);
    if (place.empty()) return RegistryInvalidHandle;
    disposition = registry().keys.contains(place) ? RegistryOpenedExistingKey : RegistryCreatedNewKey;
    registry().keys[place];
    opened = open(place, rights);
    return RegistrySuccess;
}

std::int32_t regFlushKey(RegistryKey /*key*/) {
    note("flush");
    return registry().flushStatus;
}

std::int32_t regCloseKey(RegistryKey key) {
    note("close");
    if (registry().closeStatus != RegistrySuccess) return registry().closeStatus;
    return registry().handles.erase(key) > 0 ? RegistrySuccess : RegistryInvalidHandle;
}

std::int32_t regDeleteKey(RegistryKey key, std::string_view path) {
    note("delete key");
    const std::string place = pathOf(key, path);
    if (!registry().keys.contains(place)) return RegistryFileNotFound;
    const auto isBelow = [&](const auto& other) { return other.first.starts_with(place + '\\'); };
    if (std::any_of(registry().keys.begin(), registry().keys.end(), isBelow)) return RegistryAccessDenied;
    registry().keys.erase(place);
    return RegistrySuccess;
}

std::int32_t regDeleteValue(RegistryKey key, std::string_view name) {
    note("delete value");
    if (!hasRight(key, RegistrySetValue)) return RegistryAccessDenied;
    return registry().keys[pathOf(key, {})].erase(std::string(name)) > 0 ? RegistrySuccess
                                                                         : RegistryFileNotFound;
}

std::int32_t regSetValue(RegistryKey key, std::string_view name, std::uint32_t type, std::string_view data) {
    note("set");
    if (!hasRight(key, RegistrySetValue)) return RegistryAccessDenied;
    if (registry().setStatus != RegistrySuccess) return registry().setStatus;
    registry().keys[pathOf(key, {})][std::string(name)] = {type, std::string(data)};
    return RegistrySuccess;
}

std::int32_t regQueryValue(RegistryKey key, std::string_view name, std::uint32_t& type, char* data,
                           std::uint32_t& size) {
    note(data == nullptr ? "query size" : "query data");
    if (!hasRight(key, RegistryQueryValue)) return RegistryAccessDenied;
    const auto& values = registry().keys[pathOf(key, {})];
    const auto found = values.find(std::string(name));
    if (found == values.end()) return RegistryFileNotFound;
    const fake::RegistryValue& value = found->second;
    const std::uint32_t room = size;
    type = value.type;
    size = static_cast<std::uint32_t>(value.data.size());
    if (data == nullptr) return RegistrySuccess;
    registry().buffers.push_back(room);
    if (registry().dataStatus != RegistrySuccess) return registry().dataStatus;
    if (room < size) return RegistryMoreData;
    std::copy(value.data.begin(), value.data.end(), data);
    return RegistrySuccess;
}

std::size_t openRegistryHandles() {
    return registry().handles.size();
}

} // namespace platform
