// The profile functions over files in memory: just enough of them, and with the documented results.

#include "fake.h"

#include "base/letters.h"
#include "platform/profile.h"

#include <algorithm>

namespace {

using fake::computer;

std::vector<std::string> linesOf(std::string_view path) {
    std::vector<std::string> lines;
    const auto file = computer().files.find(std::string(path));
    if (file == computer().files.end()) return lines;
    std::string line;
    for (const char c : file->second.contents) {
        if (c == '\n') {
            lines.push_back(line);
            line.clear();
        } else if (c != '\r') {
            line += c;
        }
    }
    if (!line.empty()) lines.push_back(line);
    return lines;
}

std::uint32_t store(const std::string& entries, std::span<char> buffer) {
    const bool fits = entries.size() + 1 <= buffer.size();
    const std::size_t length = fits ? entries.size() : buffer.size() - 2;
    std::copy_n(entries.begin(), length, buffer.begin());
    std::fill(buffer.begin() + static_cast<std::ptrdiff_t>(length), buffer.end(), '\0');
    return static_cast<std::uint32_t>(length);
}

bool isSection(const std::string& line, std::string_view name) {
    return base::sameNoCase(line, "[" + std::string(name) + "]");
}

} // namespace

namespace platform {

bool profileIsReadable(std::string_view path) {
    const auto file = computer().files.find(std::string(path));
    return file != computer().files.end() && file->second.contents.size() <= largestProfile;
}

std::uint32_t profileSection(std::string_view section, std::span<char> buffer, std::string_view path) {
    if (computer().profile) return computer().profile(buffer, std::string(section));
    std::string entries;
    bool inside = false;
    for (const std::string& line : linesOf(path)) {
        if (line.starts_with('[')) {
            if (inside) break;
            inside = isSection(line, section);
        } else if (inside && !line.empty()) {
            entries += line + '\0';
        }
    }
    return store(entries, buffer);
}

FileResult readProfileSection(std::string_view section, std::string& lines, std::string_view path) {
    const FileResult result = readWholeFile(path, lines);
    lines.assign(lines.size() + 2, '\0');
    lines.resize(result == FileResult::Ok ? profileSection(section, lines, path) : 0);
    return result;
}

std::uint32_t profileSectionNames(std::span<char> buffer, std::string_view path) {
    if (computer().profile) return computer().profile(buffer, {});
    std::string names;
    for (const std::string& line : linesOf(path))
        if (line.starts_with('[')) names += line.substr(1, line.find(']') - 1) + '\0';
    return store(names, buffer);
}

bool writeProfileString(std::string_view section, std::optional<std::string_view> key,
                        std::optional<std::string_view> value, std::string_view path,
                        const DriveIdentity& drive) {
    if (!fake::isOnDrive(path, drive)) return false;
    computer().writes.emplace_back(path);
    if (!key || !value || computer().writeResults.contains(std::string(path))) return false;
    if (fake::enter("write " + std::string(path))) return false;
    std::vector<std::string> lines = linesOf(path);
    const std::string entry = std::string(*key) + "=" + std::string(*value);
    auto at =
        std::find_if(lines.begin(), lines.end(), [&](const auto& line) { return isSection(line, section); });
    if (at == lines.end()) at = lines.insert(lines.end(), "[" + std::string(section) + "]");
    const auto end =
        std::find_if(at + 1, lines.end(), [](const auto& line) { return line.starts_with('['); });
    const auto old = std::find_if(at + 1, end, [&](const auto& line) {
        return base::sameNoCase(line.substr(0, line.find('=')), *key);
    });
    if (old != end)
        *old = entry;
    else
        lines.insert(end, entry);
    std::string contents;
    for (const std::string& line : lines)
        contents += line + "\r\n";
    computer().files[std::string(path)].contents = contents;
    return true;
}

bool replaceProfile(std::string_view contents, std::string_view path) {
    computer().writes.emplace_back(path);
    if (computer().writeResults.contains(std::string(path)) || fake::enter("write " + std::string(path)))
        return false;
    computer().files[std::string(path)].contents = contents;
    return true;
}

} // namespace platform
