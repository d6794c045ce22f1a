#include "platform/registry.h"

#include "platform/linux/files/own_folders.h"
#include "platform/linux/registry/registry_store.h"

#include <map>
#include <optional>
#include <vector>

namespace platform {

namespace {

using linux::RegistryRecord;
using linux::RegistryStore;
using linux::RegistryTree;
using Kind = RegistryRecord::Kind;
using Number = RegistryTree::Number;
using Names = std::vector<std::string>;

/// https://learn.microsoft.com/windows/win32/sysinfo/registry-element-size-limits
constexpr std::size_t longestKeyName = 255;
constexpr std::size_t longestValueName = 16383;
constexpr std::size_t deepestKey = 512;

constexpr std::uint32_t everyRight = 0xFFFFFFFFU;
constexpr RegistryKey handleStep = 4;

struct OpenKey {
    Number number = 0;
    std::uint32_t rights = 0;
};

RegistryStore& store() {
    static RegistryStore instance = [] {
        const std::string folder = linux::userConfigFolder();
        return RegistryStore(folder.empty() ? folder : folder + "/registry");
    }();
    return instance;
}

std::map<RegistryKey, OpenKey>& handles() {
    static std::map<RegistryKey, OpenKey> open;
    return open;
}

bool isPredefined(RegistryKey key) {
    return key >= registryClassesRoot && key - registryClassesRoot < RegistryTree::rootCount;
}

std::optional<OpenKey> openKey(RegistryKey key) {
    if (isPredefined(key)) return OpenKey{key - registryClassesRoot, everyRight};
    const auto found = handles().find(key);
    if (found == handles().end()) return std::nullopt;
    return found->second;
}

RegistryKey newHandle(Number number, std::uint32_t rights) {
    static RegistryKey last = 0;
    do {
        last += handleStep;
    } while (last == 0 || last >= registryClassesRoot || handles().contains(last));
    handles()[last] = {number, rights};
    return last;
}

std::string untilNul(std::string_view text) {
    return std::string(text.substr(0, text.find('\0')));
}

/// The names of a path; several separators in a row, and those at the end, count as one, or none.
std::int32_t splitPath(std::string_view path, Names& names) {
    std::string rest = untilNul(path);
    if (rest.starts_with('\\')) return RegistryBadPathName;
    rest += '\\';
    for (std::size_t end = rest.find('\\'); end != std::string::npos; end = rest.find('\\')) {
        if (end > 0) names.push_back(rest.substr(0, end));
        rest.erase(0, end + 1);
    }
    return RegistrySuccess;
}

/// The handle's key and the names of the path, which is what most functions begin with.
struct Target {
    std::int32_t status = RegistrySuccess;
    OpenKey start;
    Names names;

    Target(RegistryKey key, std::string_view path) {
        const auto found = openKey(key);
        if (found) start = *found;
        status = found ? splitPath(path, names) : RegistryInvalidHandle;
    }
};

/// Goes from a key along the names as far as they exist: `number` is the last key, `count` how many names led
/// there.
std::int32_t follow(const RegistryTree& tree, const Target& target, Number& number, std::size_t& count) {
    number = target.start.number;
    count = 0;
    const RegistryTree::Key* key = tree.key(number);
    if (key == nullptr) return RegistryKeyDeleted;
    for (const std::string& name : target.names) {
        const auto next = key->subkeys.find(linux::registryFolded(name));
        if (next == key->subkeys.end()) return RegistryFileNotFound;
        number = next->second;
        key = tree.key(number);
        ++count;
    }
    return RegistrySuccess;
}

std::size_t depthOf(const RegistryTree& tree, Number number) {
    std::size_t depth = 0;
    for (; number >= RegistryTree::rootCount; number = tree.key(number)->parent)
        ++depth;
    return depth;
}

/// What creates the missing keys of a path, or why they cannot be.
std::int32_t planKeys(const RegistryTree& tree, const Target& target, Number& number,
                      RegistryDisposition& disposition, std::optional<RegistryRecord>& record) {
    std::size_t count = 0;
    const std::int32_t status = follow(tree, target, number, count);
    disposition = RegistryOpenedExistingKey;
    if (status != RegistryFileNotFound) return status;
    const Names missing(target.names.begin() + static_cast<std::ptrdiff_t>(count), target.names.end());
    for (const std::string& name : missing)
        if (name.size() > longestKeyName) return RegistryInvalidParameter;
    if (depthOf(tree, number) + missing.size() > deepestKey) return RegistryInvalidParameter;
    record = RegistryRecord{Kind::Key, tree.nextNumber(), number, missing};
    number = record->key + missing.size() - 1;
    disposition = RegistryCreatedNewKey;
    return RegistrySuccess;
}

/// Changes a value of the handle's key, which must have the right to do so.
std::int32_t changeValue(
    RegistryKey key,
    const std::function<std::int32_t(const RegistryTree&, Number, std::optional<RegistryRecord>&)>& plan) {
    const auto open = openKey(key);
    if (!open) return RegistryInvalidHandle;
    if ((open->rights & RegistrySetValue) == 0) return RegistryAccessDenied;
    return store().change([&](const RegistryTree& tree, std::optional<RegistryRecord>& record) {
        if (tree.key(open->number) == nullptr) return std::int32_t{RegistryKeyDeleted};
        return plan(tree, open->number, record);
    });
}

} // namespace

std::int32_t regOpenKey(RegistryKey key, std::string_view path, std::uint32_t rights, RegistryKey& opened) {
    const Target target(key, path);
    if (target.status != RegistrySuccess) return target.status;
    Number number = 0;
    const std::int32_t status = store().read([&](const RegistryTree& tree) {
        std::size_t count = 0;
        return follow(tree, target, number, count);
    });
    if (status != RegistrySuccess) return status;
    opened = number < RegistryTree::rootCount ? key : newHandle(number, rights);
    return RegistrySuccess;
}

std::int32_t regCreateKey(RegistryKey key, std::string_view path, std::uint32_t options, std::uint32_t rights,
                          RegistryKey& opened, RegistryDisposition& disposition) {
    if (options != registryNonVolatile) return RegistryInvalidParameter;
    // A key that exists can be opened also where nothing may be written.
    const std::int32_t openStatus = regOpenKey(key, path, rights, opened);
    disposition = RegistryOpenedExistingKey;
    if (openStatus != RegistryFileNotFound) return openStatus;
    const Target target(key, path);
    Number number = 0;
    const std::int32_t status =
        store().change([&](const RegistryTree& tree, std::optional<RegistryRecord>& record) {
            return planKeys(tree, target, number, disposition, record);
        });
    if (status == RegistrySuccess) opened = newHandle(number, rights);
    return status;
}

std::int32_t regFlushKey(RegistryKey key) {
    const auto open = openKey(key);
    if (!open) return RegistryInvalidHandle;
    return store().flush();
}

std::int32_t regCloseKey(RegistryKey key) {
    return isPredefined(key) || handles().erase(key) > 0 ? RegistrySuccess : RegistryInvalidHandle;
}

std::int32_t regDeleteKey(RegistryKey key, std::string_view path) {
    const Target target(key, path);
    if (target.status != RegistrySuccess) return target.status;
    return store().change([&](const RegistryTree& tree, std::optional<RegistryRecord>& record) {
        Number number = 0;
        std::size_t count = 0;
        const std::int32_t status = follow(tree, target, number, count);
        if (status != RegistrySuccess) return status;
        const bool refused = number < RegistryTree::rootCount || !tree.key(number)->subkeys.empty();
        if (refused) return std::int32_t{RegistryAccessDenied};
        record = RegistryRecord{Kind::NoKey, number, 0, {}};
        return status;
    });
}

std::int32_t regDeleteValue(RegistryKey key, std::string_view name) {
    return changeValue(
        key,
        [&](const RegistryTree& tree, Number number, std::optional<RegistryRecord>& record) -> std::int32_t {
            if (tree.value(number, untilNul(name)) == nullptr) return RegistryFileNotFound;
            record = RegistryRecord{Kind::NoValue, number, 0, {untilNul(name)}};
            return RegistrySuccess;
        });
}

std::int32_t regSetValue(RegistryKey key, std::string_view name, std::uint32_t type, std::string_view data) {
    return changeValue(
        key,
        [&](const RegistryTree& tree, Number number, std::optional<RegistryRecord>& record) -> std::int32_t {
            if (untilNul(name).size() > longestValueName) return RegistryInvalidParameter;
            const RegistryTree::Value* const old = tree.value(number, untilNul(name));
            if (old != nullptr && old->type == type && old->data == data) return RegistrySuccess;
            record = RegistryRecord{Kind::Value, number, type, {untilNul(name), std::string(data)}};
            return RegistrySuccess;
        });
}

std::int32_t regQueryValue(RegistryKey key, std::string_view name, std::uint32_t& type, char* data,
                           std::uint32_t& size) {
    const auto open = openKey(key);
    if (!open) return RegistryInvalidHandle;
    if ((open->rights & RegistryQueryValue) == 0) return RegistryAccessDenied;
    return store().read([&](const RegistryTree& tree) -> std::int32_t {
        if (tree.key(open->number) == nullptr) return RegistryKeyDeleted;
        const RegistryTree::Value* const value = tree.value(open->number, untilNul(name));
        if (value == nullptr) return RegistryFileNotFound;
        const bool fits = value->data.size() <= size;
        type = value->type;
        size = static_cast<std::uint32_t>(value->data.size());
        if (data == nullptr) return RegistrySuccess;
        if (!fits) return RegistryMoreData;
        value->data.copy(data, value->data.size());
        return RegistrySuccess;
    });
}

std::size_t openRegistryHandles() {
    return handles().size();
}

} // namespace platform
