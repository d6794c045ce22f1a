#include "platform/basINI.h"

#include "base/keyed_list.h"
#include "base/runtime_error.h"
#include "base/text.h"
#include "base/trim.h"
#include "platform/profile.h"

#include <span>

namespace basINI {

namespace {

constexpr std::size_t sectionBufferSize = 32767;
constexpr std::size_t namesBufferStep = 256;

/// From here on the buffer doubles: each step reads the file anew, and a stick may hold any number of
/// sections.
constexpr std::size_t largestStep = 128 * namesBufferStep;

base::KeyedList IniKeys;
base::KeyedList IniValues;

/// The texts that are closed by a NUL. One that is not, the last of a cut result, is left out.
std::vector<std::string> splitAtNul(std::string_view text) {
    std::vector<std::string> lines;
    std::size_t position = 0;
    while (position + 1 < text.size()) {
        const std::size_t end = text.find('\0', position);
        if (end == std::string_view::npos) break;
        lines.push_back(base::fromAnsi(text.substr(position, end - position)));
        position = end + 1;
    }
    return lines;
}

void appendLine(std::string_view line, std::string_view file) {
    const std::size_t sign = line.find('=');
    if (sign == std::string_view::npos)
        throw base::RuntimeError(base::ErrorNumber::SubscriptOutOfRange, std::string(file),
                                 "In einer Zeile der Datei fehlt \"=\". Ergänzen Sie es, oder löschen Sie "
                                 "die Datei, und starten Sie das Programm neu.");
    const std::string_view rest = line.substr(sign + 1);
    IniKeys.add(std::string(base::trim(line.substr(0, sign))));
    IniValues.add(std::string(base::trim(rest.substr(0, rest.find('=')))));
}

} // namespace

bool IniWrite(std::string_view file, std::string_view section, std::string_view key, std::string_view value,
              const platform::DriveIdentity& drive) {
    const std::string stored = value.empty() ? " " : base::toAnsi(value);
    return platform::writeProfileString(base::toAnsi(section), base::toAnsi(key), stored, file, drive);
}

bool IniWriteFile(std::string_view file, std::string_view section, std::initializer_list<IniEntry> entries) {
    std::string text = "[" + std::string(section) + "]\r\n";
    for (const auto& [key, value] : entries)
        text.append(key).append("=").append(value.empty() ? " " : value).append("\r\n");
    return platform::replaceProfile(base::toAnsi(text), file);
}

void IniReset() {
    IniKeys = {};
    IniValues = {};
}

void IniReadSection(std::string_view file, std::string_view section) {
    std::string buffer(sectionBufferSize, ' ');
    buffer.resize(platform::profileSection(base::toAnsi(section), buffer, file));
    for (const std::string& line : splitAtNul(buffer))
        appendLine(line, file);
}

std::string IniGetKey(std::string_view position) {
    return IniKeys.get(position);
}

std::string IniGetValue(std::string_view position) {
    return IniValues.get(position);
}

std::int32_t IniCount() {
    return static_cast<std::int32_t>(IniKeys.count());
}

std::vector<std::string> IniGetSectionNames(std::string_view file) {
    std::size_t size = 0;
    std::size_t length = 0;
    std::string buffer;
    // A result two short of the buffer is the sign of a buffer that was too small (or, rarely, an exact fit:
    // then one more turn tells).
    do {
        size += size < largestStep ? namesBufferStep : size;
        buffer.assign(size, '\0');
        length = platform::profileSectionNames(buffer, file);
    } while (length == size - 2);
    buffer.resize(length);
    std::vector<std::string> names = splitAtNul(buffer);
    names.emplace_back();
    return names;
}

} // namespace basINI
