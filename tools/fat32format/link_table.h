// The table of drives that a running program shows as a folder of links.
#pragma once

#include <filesystem>
#include <string>
#include <sys/types.h>

namespace fat32format {

struct LinkTable {
    std::filesystem::path folder; ///< with the links `e:`; empty when there is no table to go by
    std::string problem;          ///< why there is none, a sentence; else empty
};

/// Each running program has a folder, called by its process id, in the common one, and letters of its own.
/// The table is that of the parent process; of no parent that has one, the only one of a living process.
/// Folders that others than the user could have changed do not count.
LinkTable findLinkTable(const std::filesystem::path& common, pid_t parent);

} // namespace fat32format
