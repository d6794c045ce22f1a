#include "platform/linux/registry/registry_tree.h"

#include "platform/linux/base/ansi_case.h"

#include <algorithm>

namespace platform::linux {

std::vector<std::string> registryNames(std::string_view path) {
    std::vector<std::string> names;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find('\\'), path.size());
        if (end > 0) names.emplace_back(path.substr(0, end));
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    return names;
}

RegistryNode::Pointer RegistryNode::find(const Names& names) const {
    const RegistryNode* key = this;
    Pointer last;
    for (const std::string& keyName : names) {
        const auto found = key->subkeys.find(ansiUpper(keyName));
        if (found == key->subkeys.end()) return nullptr;
        last = found->second;
        key = last.get();
    }
    return last;
}

const RegistryValue* RegistryNode::value(std::string_view valueName) const {
    const auto found = values.find(ansiUpper(valueName));
    return found == values.end() ? nullptr : &found->second;
}

RegistryNode& RegistryNode::create(const Names& names) {
    RegistryNode* key = this;
    for (const std::string& keyName : names) {
        Pointer& next = key->subkeys[ansiUpper(keyName)];
        if (!next) next = std::make_shared<RegistryNode>(RegistryNode{keyName});
        key = next.get();
    }
    return *key;
}

void RegistryNode::remove(const Names& names) {
    const Pointer key = find(names);
    if (!key || !key->subkeys.empty()) return;
    const Pointer above = find({names.begin(), names.end() - 1});
    (above ? *above : *this).subkeys.erase(ansiUpper(names.back()));
}

void RegistryNode::set(const RegistryValue& value) {
    RegistryValue& kept = values.try_emplace(ansiUpper(value.name), value).first->second;
    kept.type = value.type;
    kept.data = value.data;
}

void RegistryNode::become(RegistryNode&& other) {
    values = std::move(other.values);
    std::erase_if(subkeys, [&](const auto& entry) { return !other.subkeys.contains(entry.first); });
    for (auto& [upper, key] : other.subkeys) {
        const auto [mine, isNew] = subkeys.try_emplace(upper, key);
        if (!isNew) mine->second->become(std::move(*key));
    }
}

} // namespace platform::linux
