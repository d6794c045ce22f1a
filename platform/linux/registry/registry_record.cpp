#include "platform/linux/registry/registry_record.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace platform::linux {

namespace {

using Kind = RegistryRecord::Kind;

struct Grammar {
    Kind kind;
    std::string_view word;
    bool hasDetail;
    std::size_t fewestTexts, mostTexts;
};

constexpr std::size_t deepest = 512;
constexpr std::array<Grammar, 5> grammars = {{
    {Kind::Key, "key", true, 1, deepest},
    {Kind::Value, "value", true, 2, 2},
    {Kind::NoKey, "no-key", false, 0, 0},
    {Kind::NoValue, "no-value", false, 1, 1},
    {Kind::Next, "next", false, 0, 0},
}};

constexpr std::string_view digits = "0123456789ABCDEF";
constexpr std::size_t checksumLength = 8;

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
        hex += digits[(sum >> shift) & 0xFU];
    return hex;
}

bool standsForItself(char c) {
    return c >= ' ' && c <= '~' && c != '"' && c != '%';
}

std::string quoted(std::string_view text) {
    std::string result = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (standsForItself(c))
            result += c;
        else
            result.append({'%', digits[byte >> 4], digits[byte & 0xFU]});
    }
    return result + '"';
}

/// Takes a line apart from its front; every step says whether the line went on as it must.
class Scanner {
public:
    explicit Scanner(std::string_view line) : rest_(line) {}

    bool atEnd() const { return rest_.empty(); }

    bool blank() {
        if (!rest_.starts_with(' ')) return false;
        rest_.remove_prefix(1);
        return true;
    }

    std::string_view word() {
        const std::string_view found = rest_.substr(0, rest_.find(' '));
        rest_.remove_prefix(found.size());
        return found;
    }

    bool number(std::uint64_t& value) {
        if (!blank()) return false;
        const char* const end = rest_.data() + rest_.size();
        const auto [stop, error] = std::from_chars(rest_.data(), end, value);
        if (error != std::errc()) return false;
        rest_.remove_prefix(static_cast<std::size_t>(stop - rest_.data()));
        return true;
    }

    bool text(std::string& value) {
        if (!blank() || !rest_.starts_with('"')) return false;
        const std::size_t end = rest_.find('"', 1);
        if (end == std::string_view::npos) return false;
        const bool valid = unquote(rest_.substr(1, end - 1), value);
        rest_.remove_prefix(end + 1);
        return valid;
    }

private:
    static bool unquote(std::string_view text, std::string& value) {
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (text[i] != '%') {
                if (!standsForItself(text[i])) return false;
                value += text[i];
                continue;
            }
            if (i + 2 >= text.size()) return false;
            const std::size_t high = digits.find(text[i + 1]);
            const std::size_t low = digits.find(text[i + 2]);
            if (high == std::string_view::npos || low == std::string_view::npos) return false;
            value += static_cast<char>(static_cast<unsigned char>(high * 16 + low));
            i += 2;
        }
        return true;
    }

    std::string_view rest_;
};

} // namespace

std::string registryLine(const RegistryRecord& record) {
    const auto* const grammar = std::find_if(grammars.begin(), grammars.end(),
                                             [&](const Grammar& g) { return g.kind == record.kind; });
    std::string line = std::string(grammar->word) + ' ' + std::to_string(record.key);
    if (grammar->hasDetail) line += ' ' + std::to_string(record.detail);
    for (const std::string& text : record.texts)
        line += ' ' + quoted(text);
    return checksum(line) + ' ' + line + '\n';
}

std::optional<RegistryRecord> parseRegistryLine(std::string_view line) {
    if (line.size() <= checksumLength || line[checksumLength] != ' ') return std::nullopt;
    const std::string_view body = line.substr(checksumLength + 1);
    if (line.substr(0, checksumLength) != checksum(body)) return std::nullopt;
    Scanner scanner(body);
    const std::string_view word = scanner.word();
    const auto* const grammar =
        std::find_if(grammars.begin(), grammars.end(), [&](const Grammar& g) { return g.word == word; });
    if (grammar == grammars.end()) return std::nullopt;
    RegistryRecord record;
    record.kind = grammar->kind;
    if (!scanner.number(record.key)) return std::nullopt;
    if (grammar->hasDetail && !scanner.number(record.detail)) return std::nullopt;
    while (!scanner.atEnd()) {
        if (record.texts.size() == grammar->mostTexts || !scanner.text(record.texts.emplace_back()))
            return std::nullopt;
    }
    if (record.texts.size() < grammar->fewestTexts) return std::nullopt;
    return record;
}

} // namespace platform::linux
