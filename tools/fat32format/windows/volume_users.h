#pragma once

#include "tools/fat32format/windows/system_library.h"

#include <string>
#include <vector>

namespace fat32format {

/// Names of programs that have files below that folder open, as the Restart Manager tells them. It is asked
/// for some files only, those that are found first: it may know of none, or not of all.
/// https://learn.microsoft.com/windows/win32/rstmgr/using-restart-manager-with-a-primary-installer
std::vector<std::wstring> programsUsing(const std::wstring& root);

} // namespace fat32format
