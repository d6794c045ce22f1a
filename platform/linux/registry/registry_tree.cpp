#include "platform/linux/registry/registry_tree.h"

#include <algorithm>

namespace platform::linux {

namespace {

constexpr unsigned char caseDistance = 0x20;

unsigned char upper(unsigned char c) {
    const bool basic = c >= 'a' && c <= 'z';
    const bool accented = c >= 0xE0 && c <= 0xFE && c != 0xF7; // 0xF7 is the division sign
    if (basic || accented) return static_cast<unsigned char>(c - caseDistance);
    if (c == 0x9A || c == 0x9C || c == 0x9E) return static_cast<unsigned char>(c - 0x10); // š, œ, ž
    return c == 0xFF ? 0x9F : c;                                                          // ÿ
}

} // namespace

std::string registryFolded(std::string_view name) {
    std::string folded(name);
    std::transform(folded.begin(), folded.end(), folded.begin(),
                   [](char c) { return static_cast<char>(upper(static_cast<unsigned char>(c))); });
    return folded;
}

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
        const auto found = key->subkeys.find(registryFolded(keyName));
        if (found == key->subkeys.end()) return nullptr;
        last = found->second;
        key = last.get();
    }
    return last;
}

const RegistryValue* RegistryNode::value(std::string_view valueName) const {
    const auto found = values.find(registryFolded(valueName));
    return found == values.end() ? nullptr : &found->second;
}

RegistryNode& RegistryNode::create(const Names& names) {
    RegistryNode* key = this;
    for (const std::string& keyName : names) {
        Pointer& next = key->subkeys[registryFolded(keyName)];
        if (!next) next = std::make_shared<RegistryNode>(RegistryNode{keyName});
        key = next.get();
    }
    return *key;
}

void RegistryNode::remove(const Names& names) {
    const Pointer key = find(names);
    if (!key || !key->subkeys.empty()) return;
    const Pointer above = find({names.begin(), names.end() - 1});
    (above ? *above : *this).subkeys.erase(registryFolded(names.back()));
}

void RegistryNode::set(const RegistryValue& value) {
    RegistryValue& kept = values.try_emplace(registryFolded(value.name), value).first->second;
    kept.type = value.type;
    kept.data = value.data;
}

void RegistryNode::become(RegistryNode&& other) {
    values = std::move(other.values);
    std::erase_if(subkeys, [&](const auto& entry) { return !other.subkeys.contains(entry.first); });
    for (auto& [folded, key] : other.subkeys) {
        const auto [mine, isNew] = subkeys.try_emplace(folded, key);
        if (!isNew) mine->second->become(std::move(*key));
    }
}

} // namespace platform::linux
