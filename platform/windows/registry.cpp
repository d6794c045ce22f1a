#include "platform/registry.h"

#include <windows.h>

#include <set>
#include <string>

namespace platform {

namespace {

std::set<RegistryKey>& openHandles() {
    static auto* const handles = new std::set<RegistryKey>;
    return *handles;
}

std::string upToNul(std::string_view text) {
    return std::string(text.substr(0, text.find('\0')));
}

/// The predefined keys are negative numbers of 32 bits.
HKEY native(RegistryKey key) {
    return reinterpret_cast<HKEY>(static_cast<std::intptr_t>(static_cast<std::int32_t>(key)));
}

bool isPredefined(RegistryKey key) {
    return (key & 0x80000000U) != 0;
}

RegistryKey noted(HKEY handle) {
    const auto key = static_cast<RegistryKey>(reinterpret_cast<std::uintptr_t>(handle));
    if (!isPredefined(key)) openHandles().insert(key);
    return key;
}

} // namespace

std::int32_t regOpenKey(RegistryKey key, std::string_view path, std::uint32_t rights, RegistryKey& opened) {
    HKEY handle = nullptr;
    const LSTATUS status = RegOpenKeyExA(native(key), upToNul(path).c_str(), 0, rights, &handle);
    if (status == ERROR_SUCCESS) opened = noted(handle);
    return status;
}

std::int32_t regCreateKey(RegistryKey key, std::string_view path, std::uint32_t options, std::uint32_t rights,
                          RegistryKey& opened, RegistryDisposition& disposition) {
    HKEY handle = nullptr;
    DWORD outcome = 0;
    const LSTATUS status = RegCreateKeyExA(native(key), upToNul(path).c_str(), 0, nullptr, options, rights,
                                           nullptr, &handle, &outcome);
    if (status != ERROR_SUCCESS) return status;
    opened = noted(handle);
    disposition = static_cast<RegistryDisposition>(outcome);
    return status;
}

std::int32_t regFlushKey(RegistryKey key) {
    return RegFlushKey(native(key));
}

std::int32_t regCloseKey(RegistryKey key) {
    const LSTATUS status = RegCloseKey(native(key));
    if (status == ERROR_SUCCESS) openHandles().erase(key);
    return status;
}

// Not SHDeleteKeyA, which would take the subkeys along: a key that has some is to be refused.
std::int32_t regDeleteKey(RegistryKey key, std::string_view path) {
    return RegDeleteKeyA(native(key), upToNul(path).c_str());
}

std::int32_t regDeleteValue(RegistryKey key, std::string_view name) {
    return RegDeleteValueA(native(key), upToNul(name).c_str());
}

std::int32_t regSetValue(RegistryKey key, std::string_view name, std::uint32_t type, std::string_view data) {
    const std::string bytes(data); // the function may look for a NUL behind a text
    return RegSetValueExA(native(key), upToNul(name).c_str(), 0, type,
                          reinterpret_cast<const BYTE*>(bytes.c_str()), static_cast<DWORD>(bytes.size()));
}

std::int32_t regQueryValue(RegistryKey key, std::string_view name, std::uint32_t& type, char* data,
                           std::uint32_t& size) {
    DWORD valueType = type;
    DWORD valueSize = size;
    const LSTATUS status = RegQueryValueExA(native(key), upToNul(name).c_str(), nullptr, &valueType,
                                            reinterpret_cast<BYTE*>(data), &valueSize);
    if (status == ERROR_SUCCESS || status == ERROR_MORE_DATA) {
        type = valueType;
        size = valueSize;
    }
    return status;
}

std::size_t openRegistryHandles() {
    return openHandles().size();
}

} // namespace platform
