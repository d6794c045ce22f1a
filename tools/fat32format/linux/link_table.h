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

/// Each running program has a folder, called by its process id, in the common one, and letters of its own.
/// The table is that of the parent process; of no parent that has one, the only one of a living process.
/// Folders that are links, or that others than their owner could look into or change, do not count.
LinkTable findLinkTable(const std::filesystem::path& common, pid_t parent, uid_t owner);

} // namespace fat32format
