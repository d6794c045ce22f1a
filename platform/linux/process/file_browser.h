// The desktop's file browser, which shows folders and starts nothing.
#pragma once

#include <string>

namespace platform::linux {

/// Asks the file browser to show a folder by its absolute path. True when it does, or was asked and has not
/// answered within two seconds; false when there is none, or it refuses. org.freedesktop.FileManager1,
/// `ShowFolders`, https://www.freedesktop.org/wiki/Specifications/file-manager-interface/
bool askFileBrowserToShow(const std::string& folder);

} // namespace platform::linux
