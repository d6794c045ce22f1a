#include "tests/driver/windows/request.h"

namespace probe {

namespace {

std::string unescaped(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            result += text[i];
            continue;
        }
        const char c = text[++i];
        result += c == 't' ? '\t' : c == 'n' ? '\n' : c == 'r' ? '\r' : c;
    }
    return result;
}

std::string_view nextField(std::string_view& line) {
    const std::size_t end = line.find('\t');
    const std::string_view field = line.substr(0, end);
    line.remove_prefix(end == std::string_view::npos ? line.size() : end + 1);
    return field;
}

} // namespace

Request::Request(std::string_view line) : what_(nextField(line)) {
    while (!line.empty()) {
        const std::string_view field = nextField(line);
        const std::size_t equals = field.find('=');
        if (equals == std::string_view::npos) throw Failure("a field without a value");
        values_[std::string(field.substr(0, equals))] = unescaped(field.substr(equals + 1));
    }
}

std::string Request::text(const std::string& key) const {
    const auto found = values_.find(key);
    return found == values_.end() ? std::string() : found->second;
}

int Request::number(const std::string& key, int otherwise) const {
    const auto found = values_.find(key);
    return found == values_.end() ? otherwise : std::stoi(found->second);
}

} // namespace probe
