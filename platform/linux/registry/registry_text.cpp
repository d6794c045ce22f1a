#include "platform/linux/registry/registry_text.h"

#include "base/whole_number.h"
#include "platform/linux/base/percent_text.h"

#include <algorithm>
#include <array>
#include <optional>

namespace platform::linux {

namespace {

constexpr std::string_view header = "orvanta-usbtool registry 2";
constexpr std::string_view plain = "-._\\:";
constexpr std::size_t checksumLength = 8;

/// More than any key of the registry has above it; whoever goes through the tree calls itself for each.
constexpr std::size_t deepest = 1000;

constexpr std::array<std::uint32_t, 256> checksumTable = [] {
    constexpr std::uint32_t polynomial = 0xEDB88320U;
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t i = 0; i < table.size(); ++i) {
        std::uint32_t value = i;
        for (int bit = 0; bit < 8; ++bit)
            value = (value >> 1) ^ ((value & 1U) != 0 ? polynomial : 0);
        table[i] = value;
    }
    return table;
}();

/// CRC-32 as in ISO 3309.
std::string checksum(std::string_view text) {
    std::uint32_t sum = 0xFFFFFFFFU;
    for (const char c : text)
        sum = (sum >> 8) ^ checksumTable[(sum ^ static_cast<unsigned char>(c)) & 0xFFU];
    sum = ~sum;
    std::string hex;
    for (int shift = 28; shift >= 0; shift -= 4)
        hex += "0123456789ABCDEF"[(sum >> shift) & 0xFU];
    return hex;
}

void addLine(std::string& text, const std::string& body) {
    text.append(checksum(body)).append(" ").append(body).append("\n");
}

void addKey(std::string& text, const RegistryNode& key, const std::string& path) {
    addLine(text, "key " + path);
    for (const auto& [upper, value] : key.values)
        addLine(text, "value " + path + ' ' + std::to_string(value.type) + ' ' +
                          percentEncoded(value.name, plain) + ' ' + percentEncoded(value.data, plain));
    for (const auto& [upper, subkey] : key.subkeys)
        addKey(text, *subkey, path + '\\' + percentEncoded(subkey->name, plain));
}

/// The fields of a line between its blanks; none when one of them is no proper text.
std::vector<std::string> fieldsOf(std::string_view body) {
    std::vector<std::string> fields;
    for (;;) {
        const std::size_t end = std::min(body.find(' '), body.size());
        const auto field = percentDecoded(body.substr(0, end));
        if (!field) return {};
        fields.push_back(*field);
        if (end == body.size()) return fields;
        body.remove_prefix(end + 1);
    }
}

bool takeLine(std::string_view line, RegistryNode& top) {
    if (line.size() <= checksumLength || line[checksumLength] != ' ') return false;
    const std::string_view body = line.substr(checksumLength + 1);
    if (line.substr(0, checksumLength) != checksum(body)) return false;
    const std::vector<std::string> fields = fieldsOf(body);
    const bool isKey = fields.size() == 2 && fields[0] == "key";
    const bool isValue = fields.size() == 5 && fields[0] == "value";
    const auto type = isValue ? base::wholeNumber<std::uint32_t>(fields[2]) : std::nullopt;
    if (!isKey && !type) return false;
    const auto names = registryNames(fields[1]);
    if (names.empty() || names.size() > deepest) return false;
    RegistryNode& key = top.create(names);
    if (isValue) key.set({fields[3], *type, fields[4]});
    return true;
}

} // namespace

std::string registryText(const RegistryNode& top) {
    std::string text = std::string(header) + '\n';
    for (const auto& [upper, key] : top.subkeys)
        addKey(text, *key, percentEncoded(key->name, plain));
    return text;
}

bool readRegistryText(std::string_view text, RegistryNode& top) {
    bool whole = true;
    for (bool isFirst = true; !text.empty(); isFirst = false) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        whole = (isFirst ? line == header : takeLine(line, top)) && whole;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return whole;
}

} // namespace platform::linux
