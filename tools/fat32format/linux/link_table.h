// The table of drives that a running program shows as a folder of links.
#pragma once

#include "platform/linux/base/unique_fd.h"
#include "tools/fat32format/system.h"

#include <filesystem>
#include <optional>
#include <string>
#include <sys/types.h>

namespace fat32format {

class LinkTable {
public:
    LinkTable() = default;
    explicit LinkTable(std::string problem) : problem_(std::move(problem)) {}
    LinkTable(std::filesystem::path folder, platform::linux::UniqueFd opened)
        : folder_(std::move(folder)), opened_(std::move(opened)) {}

    /// Why there is none to go by, a sentence; else empty.
    const std::string& problem() const { return problem_; }
    /// Empty when there is none.
    const std::filesystem::path& folder() const { return folder_; }
    /// What the link `e:` leads to, and the disk that the link `e:.disk` tells of. The letter is in upper
    /// case.
    std::optional<Target> target(char letter) const;

private:
    std::string problem_;
    std::filesystem::path folder_;
    platform::linux::UniqueFd opened_; ///< the folder, which is looked up just once
};

/// Where a user's programs show their tables: each running one has a folder, called by its process id, in
/// there, and letters of its own. Folders that are links, or that others than their owner could look into or
/// change, do not count, nor do those that bear the id of somebody else's process.
struct TablePlace {
    std::filesystem::path folder;
    uid_t owner;
};

/// The table is that of the parent process, wherever it is; of no parent that has one, the only one of the
/// caller's living processes; of no such, the only one in the own place. What keeps from looking is a problem
/// even where another place has a table: it could be that of another program, with other letters.
LinkTable findLinkTable(const TablePlace& own, const std::optional<TablePlace>& caller, pid_t parent);

} // namespace fat32format
