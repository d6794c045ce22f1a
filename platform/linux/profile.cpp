#include "platform/profile.h"

#include "platform/files.h"
#include "platform/linux/base/profile_text.h"
#include "platform/linux/files/file_replace.h"

#include <algorithm>
#include <string>

namespace platform {

using namespace linux;

namespace {

bool readProfile(std::string_view path, std::string& text) {
    const auto length = fileLength(path);
    return length && *length <= largestProfile && readWholeFile(path, text) == FileResult::Ok;
}

bool fitsInLine(std::string_view text) {
    return text.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
}

/// Hands the entries out in the shape of the Windows functions: a list is complete when two characters stay
/// free, of which the last one need not be filled.
std::uint32_t handOut(std::string_view entries, std::span<char> buffer) {
    const std::size_t size = std::min<std::size_t>(buffer.size(), UINT32_MAX);
    if (size == 0) return 0;
    const std::size_t room = size - std::min<std::size_t>(size, 2);
    const std::size_t count = std::min(entries.size(), room);
    std::copy_n(entries.begin(), count, buffer.begin());
    const std::size_t closing = entries.size() > room ? size : count + 1;
    std::fill(buffer.begin() + static_cast<std::ptrdiff_t>(count),
              buffer.begin() + static_cast<std::ptrdiff_t>(closing), '\0');
    return static_cast<std::uint32_t>(count);
}

} // namespace

bool profileIsReadable(std::string_view path) {
    std::string text;
    return readProfile(path, text);
}

std::uint32_t profileSection(std::string_view section, std::span<char> buffer, std::string_view path) {
    std::string text;
    return handOut(readProfile(path, text) ? profileLines(text, section) : std::string(), buffer);
}

std::uint32_t profileSectionNames(std::span<char> buffer, std::string_view path) {
    std::string text;
    return handOut(readProfile(path, text) ? profileNames(text, buffer.size()) : std::string(), buffer);
}

FileResult readProfileSection(std::string_view section, std::string& lines, std::string_view path) {
    lines.clear();
    if (fileLength(path).value_or(0) > largestProfile) return FileResult::PathFileAccess;
    std::string text;
    const FileResult result = readWholeFile(path, text);
    lines = profileLines(text, section);
    return result;
}

bool writeProfileString(std::string_view section, std::optional<std::string_view> key,
                        std::optional<std::string_view> value, std::string_view path,
                        const DriveIdentity& drive) {
    if (!fitsInLine(section) || !fitsInLine(key.value_or("")) || !fitsInLine(value.value_or("")))
        return false;
    if (key && profileTrimmed(*key).empty()) return false;

    FileReplacement file(path, drive);
    if (file.possible() != FileResult::Ok) return false;
    std::string text;
    if (file.exists() && !readProfile(path, text)) return false;
    const std::string changed =
        key ? withProfileKey(text, section, *key, value) : withoutProfileSection(text, section);
    return changed == text || (changed.size() <= largestProfile && file.replace(changed) == FileResult::Ok);
}

bool replaceProfile(std::string_view contents, std::string_view path) {
    FileReplacement file(path);
    return file.possible() == FileResult::Ok && file.replace(contents) == FileResult::Ok;
}

} // namespace platform
