#include "platform/linux/base/profile_text.h"

#include "base/trim.h"
#include "platform/linux/base/ansi_case.h"

#include <algorithm>

namespace platform::linux {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view lineEnd = "\r\n";

/// One line: where it lies in the text, and its text without white space around it.
struct Line {
    std::size_t begin = 0;
    std::size_t textEnd = 0; ///< before the line end
    std::size_t end = 0;     ///< behind the line end
    std::string_view text;

    bool isEmpty() const { return text.empty(); }
    bool isComment() const { return !text.empty() && text[0] == ';'; }

    std::optional<std::string_view> sectionName() const {
        if (text.empty() || text[0] != '[') return std::nullopt;
        const std::size_t bracket = text.rfind(']');
        if (bracket == std::string_view::npos) return std::nullopt;
        return profileTrimmed(text.substr(1, bracket - 1));
    }

    /// What stands before the `=`, or the whole text when there is none.
    std::string_view key() const { return profileTrimmed(text.substr(0, text.find('='))); }
};

class Lines {
public:
    explicit Lines(std::string_view text) : text_(text) {}

    bool next(Line& line) {
        if (line.end >= text_.size()) return false;
        line.begin = line.end;
        line.textEnd = std::min(text_.find_first_of(lineEnd, line.begin), text_.size());
        const bool two = text_.substr(line.textEnd, 2) == lineEnd;
        line.end = std::min(line.textEnd + (two ? 2 : 1), text_.size());
        const std::string_view whole = text_.substr(line.begin, line.textEnd - line.begin);
        line.text = profileTrimmed(whole.substr(0, whole.find('\0')));
        return true;
    }

private:
    std::string_view text_;
};

/// Where a section lies, and a key in it.
struct Found {
    bool section = false;
    std::size_t begin = 0;
    std::size_t end = 0;
    std::size_t lastLineEnd = 0; ///< behind its last line that is not empty
    std::optional<Line> key;
};

Found findSection(std::string_view text, std::string_view section, std::optional<std::string_view> key) {
    Found found;
    Lines lines(text);
    for (Line line; lines.next(line);) {
        if (const auto name = line.sectionName()) {
            if (found.section) break;
            if (!isSameAnsi(*name, section)) continue;
            found = {true, line.begin, line.end, line.end, std::nullopt};
        } else if (found.section) {
            found.end = line.end;
            if (line.isEmpty()) continue;
            found.lastLineEnd = line.end;
            if (key && !found.key && !line.isComment() && isSameAnsi(line.key(), *key)) found.key = line;
        }
    }
    return found;
}

std::string replaced(std::string_view text, std::size_t begin, std::size_t end, std::string_view by) {
    std::string result;
    result.reserve(text.size() + by.size());
    result.append(text.substr(0, begin)).append(by).append(text.substr(end));
    return result;
}

/// Adds whole lines at the start of a line or at the end of the text.
std::string inserted(std::string_view text, std::size_t at, const std::string& lines) {
    const bool afterLineEnd = at == 0 || lineEnd.find(text[at - 1]) != std::string_view::npos;
    return replaced(text, at, at, afterLineEnd ? lines : std::string(lineEnd) + lines);
}

} // namespace

std::string_view profileTrimmed(std::string_view text) {
    static constexpr std::string_view whiteSpace = "\t\n\v\f\r \x1A"sv;
    return base::trim(text, whiteSpace);
}

std::vector<ProfileLine> profileEntries(std::string_view text, std::string_view section) {
    std::vector<ProfileLine> entries;
    const Found found = findSection(text, profileTrimmed(section), std::nullopt);
    Lines lines(text.substr(0, found.end));
    Line line;
    line.end = found.begin;
    while (lines.next(line)) {
        if (line.begin == found.begin || line.isEmpty() || line.isComment()) continue;
        ProfileLine& entry = entries.emplace_back(ProfileLine{line.key(), std::nullopt});
        const std::size_t equals = line.text.find('=');
        if (equals != std::string_view::npos) entry.value = profileTrimmed(line.text.substr(equals + 1));
    }
    return entries;
}

std::string profileLines(std::string_view text, std::string_view section) {
    std::string result;
    for (const ProfileLine& entry : profileEntries(text, section)) {
        result.append(entry.key);
        if (entry.value) result.append("=").append(*entry.value);
        result += '\0';
    }
    return result;
}

std::string profileNames(std::string_view text, std::size_t enough) {
    std::string result;
    Lines lines(text);
    for (Line line; result.size() < enough && lines.next(line);) {
        const auto name = line.sectionName();
        if (name && !name->empty()) result.append(*name).append(1, '\0');
    }
    return result;
}

std::string withProfileKey(std::string_view text, std::string_view section, std::string_view key,
                           std::optional<std::string_view> value) {
    section = profileTrimmed(section);
    key = profileTrimmed(key);
    const Found found = findSection(text, section, key);
    if (!value) return found.key ? replaced(text, found.key->begin, found.key->end, {}) : std::string(text);

    std::string line(key);
    line.append("=").append(profileTrimmed(*value));
    if (found.key) return replaced(text, found.key->begin, found.key->textEnd, line);
    line.append(lineEnd);
    if (found.section) return inserted(text, found.lastLineEnd, line);
    return inserted(text, text.size(), std::string("[").append(section).append("]").append(lineEnd) + line);
}

std::string withoutProfileSection(std::string_view text, std::string_view section) {
    const Found found = findSection(text, profileTrimmed(section), std::nullopt);
    return replaced(text, found.begin, found.end, {});
}

} // namespace platform::linux
