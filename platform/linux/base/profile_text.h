// The contents of a private-profile (INI) file: reading and editing the text, without any file.
//
// Lines end with CR LF, LF or CR. White space around section names, keys and values does not count. A line
// whose first character is `;` is a comment. `[name]` begins a section; what follows the last bracket of the
// line does not count. Of several sections with one name only the first is read and changed. What comes
// before the first section belongs to none; so does, on account of its first bytes, a section line behind a
// UTF-8 byte order mark. A line's text ends at its first NUL. All functions take time in proportion to the
// text.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform::linux {

/// A line of a section; both views are into the text.
struct ProfileLine {
    std::string_view key; ///< what stands before the `=`, or the whole line without one
    std::optional<std::string_view> value;
};

/// The lines of a section without comments and empty ones, in their order.
std::vector<ProfileLine> profileEntries(std::string_view text, std::string_view section);

/// The same as `key=value` where they have a `=`, each closed by a NUL.
std::string profileLines(std::string_view text, std::string_view section);

/// The names of all sections, each closed by a NUL; those that are empty are left out. The search ends when
/// the result has reached `enough` characters.
std::string profileNames(std::string_view text, std::size_t enough = std::string_view::npos);

/// The text with the key set, or, without a value, deleted: the first such line of the section is replaced,
/// else a line is added behind the last line of the section that is not empty, or a section at the end. All
/// other lines stay as they are; new ones end with CR LF.
std::string withProfileKey(std::string_view text, std::string_view section, std::string_view key,
                           std::optional<std::string_view> value);

/// The text without the section's line and all that belongs to it.
std::string withoutProfileSection(std::string_view text, std::string_view section);

/// The text without white space at its ends.
std::string_view profileTrimmed(std::string_view text);

} // namespace platform::linux
