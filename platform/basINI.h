// INI files: writing single keys, listing sections, and reading sections into two lists that callers walk by
// position.
#pragma once

#include "platform/drive_identity.h"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace basINI {

/// Writes one key; false when the file could not be written. An empty value is stored as one blank, so that
/// the key never disappears.
/// Only on that drive, when one is given.
bool IniWrite(std::string_view file, std::string_view section, std::string_view key, std::string_view value,
              const platform::DriveIdentity& drive = {});

/// A key and its value.
using IniEntry = std::pair<std::string_view, std::string_view>;

/// Makes the file one that holds this section and nothing else, or leaves what was there: false when it could
/// not be written. Empty values as of IniWrite().
bool IniWriteFile(std::string_view file, std::string_view section, std::initializer_list<IniEntry> entries);

/// Replaces the lists of keys and values by empty ones.
void IniReset();

/// Appends the keys and values of a section to the lists. A missing file or section appends nothing; what
/// lies beyond 32767 characters is cut off. Of a value that contains "=" the text up to there is kept. Throws
/// base::RuntimeError (SubscriptOutOfRange) at a line without "=".
void IniReadSection(std::string_view file, std::string_view section);

/// The key, or the value, at a position ("0", "1", …); empty when there is none.
std::string IniGetKey(std::string_view position);
std::string IniGetValue(std::string_view position);

/// Number of entries in the lists.
std::int32_t IniCount();

/// The names of all sections, in file order, and always one empty text behind the last.
std::vector<std::string> IniGetSectionNames(std::string_view file);

} // namespace basINI
