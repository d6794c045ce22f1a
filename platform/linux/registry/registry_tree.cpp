#include "platform/linux/registry/registry_tree.h"

#include <algorithm>
#include <chrono>
#include <limits>

namespace platform::linux {

namespace {

using Kind = RegistryRecord::Kind;

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

RegistryTree::RegistryTree() {
    for (Number root = 0; root < rootCount; ++root)
        keys_[root].parent = root;
}

const RegistryTree::Key* RegistryTree::key(Number number) const {
    const auto found = keys_.find(number);
    return found == keys_.end() ? nullptr : &found->second;
}

const RegistryTree::Value* RegistryTree::value(Number key, std::string_view name) const {
    const auto& values = keys_.at(key).values;
    const auto found = values.find(registryFolded(name));
    return found == values.end() ? nullptr : &found->second;
}

RegistryTree::Number RegistryTree::nextNumber() const {
    if (next_ > rootCount) return next_;
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const auto micro = std::chrono::duration_cast<std::chrono::microseconds>(now).count();
    return std::max(next_, static_cast<Number>(micro));
}

bool RegistryTree::apply(const RegistryRecord& record) {
    switch (record.kind) {
    case Kind::Key:
        return createKeys(record);
    case Kind::Value:
        return setValue(record);
    case Kind::NoKey:
        return deleteKey(record.key);
    case Kind::NoValue: {
        const auto found = keys_.find(record.key);
        return found != keys_.end() && found->second.values.erase(registryFolded(record.texts[0])) > 0;
    }
    case Kind::Next:
        next_ = std::max(next_, record.key);
        return true;
    }
    return false;
}

bool RegistryTree::createKeys(const RegistryRecord& record) {
    const auto above = keys_.find(record.detail);
    const bool numbersLeft = record.key <= std::numeric_limits<Number>::max() - record.texts.size();
    if (above == keys_.end() || record.key < next_ || !numbersLeft) return false;
    if (above->second.subkeys.contains(registryFolded(record.texts[0]))) return false;
    Number parent = record.detail;
    next_ = record.key;
    for (const std::string& name : record.texts) {
        keys_[parent].subkeys[registryFolded(name)] = next_;
        Key& created = keys_[next_];
        created.name = name;
        created.parent = parent;
        parent = next_++;
    }
    return true;
}

bool RegistryTree::setValue(const RegistryRecord& record) {
    const auto found = keys_.find(record.key);
    if (found == keys_.end() || record.detail > std::numeric_limits<std::uint32_t>::max()) return false;
    Value& value = found->second.values[registryFolded(record.texts[0])];
    if (value.name.empty()) value.name = record.texts[0];
    value.type = static_cast<std::uint32_t>(record.detail);
    value.data = record.texts[1];
    return true;
}

bool RegistryTree::deleteKey(Number number) {
    const auto found = keys_.find(number);
    if (number < rootCount || found == keys_.end() || !found->second.subkeys.empty()) return false;
    keys_[found->second.parent].subkeys.erase(registryFolded(found->second.name));
    keys_.erase(found);
    return true;
}

/// A key's number is higher than its parent's, so that in the order of numbers every key finds its parent.
std::string RegistryTree::lines() const {
    std::string text;
    for (const auto& [number, key] : keys_) {
        if (number >= rootCount) text += registryLine({Kind::Key, number, key.parent, {key.name}});
        for (const auto& [folded, value] : key.values)
            text += registryLine({Kind::Value, number, value.type, {value.name, value.data}});
    }
    return text + registryLine({Kind::Next, next_, 0, {}});
}

} // namespace platform::linux
