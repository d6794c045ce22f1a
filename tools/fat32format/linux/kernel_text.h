// Small files and folders of the kernel, read so that a failure is told from what is empty.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace fat32format {

struct FileText {
    std::string text; ///< all of it; nothing when it could not be read to its end
    int error = 0;    ///< 0, or the error number
};

FileText readText(const std::filesystem::path& file);

struct FolderNames {
    std::vector<std::string> names; ///< without "." and ".."
    int error = 0;                  ///< 0, or the error number; the names may then be incomplete
};

FolderNames readNames(const std::filesystem::path& folder);
/// Of an open folder, from its beginning. The descriptor stays the caller's.
FolderNames readNames(int folder);

} // namespace fat32format
