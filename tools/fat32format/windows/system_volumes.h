// The volumes that must not be formatted.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace fat32format {

/// Names to open the volumes by that Windows starts from and runs on, that hold its page files, and this
/// program. No value when one of them cannot be told.
std::optional<std::vector<std::wstring>> volumesOfWindows();

/// The letters of the volumes in a list of page files, `\??\C:\pagefile.sys` or `C:\pagefile.sys 0 0`. "?" is
/// any volume that Windows chooses, which it then lists by its letter elsewhere. No value when a file is
/// named in another way.
std::optional<std::vector<wchar_t>> lettersOfPageFiles(const std::vector<std::wstring>& files);

} // namespace fat32format
