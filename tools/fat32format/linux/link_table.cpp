#include "tools/fat32format/linux/link_table.h"

#include "base/letters.h"
#include "base/whole_number.h"
#include "tools/fat32format/linux/identity_text.h"
#include "tools/fat32format/linux/kernel_text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace fat32format {

namespace {

namespace fs = std::filesystem;
using platform::linux::UniqueFd;

constexpr const char* notRunning = "There is no table of drives: the program orvanta-usbtool does not run.";

bool belongsAlone(int folder, uid_t owner) {
    struct stat info {};
    if (fstat(folder, &info) != 0) return false;
    return info.st_uid == owner && (info.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

/// Whether a folder's name is the id of one of the user's processes.
bool isOfALivingProcess(const std::string& name) {
    const auto process = base::wholeNumber<pid_t>(name);
    if (!process || *process <= 0) return false;
    return kill(*process, 0) == 0;
}

/// A folder inside another one, never through a link. Not there: neither a folder nor a problem.
struct Found {
    UniqueFd folder;
    std::string problem;
};

Found openOwn(int parent, const fs::path& name, const fs::path& shown, uid_t owner) {
    UniqueFd folder(openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder && errno == ENOENT) return {};
    if (!folder && errno != ELOOP && errno != ENOTDIR)
        return {{}, "The table of drives in " + shown.string() + " cannot be read."};
    if (!folder || !belongsAlone(folder.get(), owner))
        return {{}, "Others than the user may change the table of drives in " + shown.string() + '.'};
    return {std::move(folder), {}};
}

LinkTable openTable(int common, const fs::path& shown, const std::string& name, uid_t owner) {
    Found found = openOwn(common, name, shown / name, owner);
    if (!found.problem.empty()) return LinkTable(found.problem);
    if (!found.folder) return {};
    return {shown / name, std::move(found.folder)};
}

LinkTable onlyTable(int common, const fs::path& shown, uid_t owner) {
    FolderNames all = readNames(common);
    if (all.error != 0) return LinkTable("The table of drives in " + shown.string() + " cannot be read.");
    std::erase_if(all.names, [](const std::string& name) { return !isOfALivingProcess(name); });
    if (all.names.empty()) return LinkTable(notRunning);
    if (all.names.size() > 1)
        return LinkTable(
            "The program orvanta-usbtool runs more than once, each time with drive letters of its own.");
    LinkTable table = openTable(common, shown, all.names.front(), owner);
    const bool hasEnded = table.folder().empty() && table.problem().empty();
    return hasEnded ? LinkTable(notRunning) : std::move(table);
}

std::optional<std::string> readLink(int folder, const std::string& name) {
    std::array<char, PATH_MAX> text = {};
    const ssize_t length = readlinkat(folder, name.c_str(), text.data(), text.size());
    if (length < 0 || static_cast<std::size_t>(length) == text.size()) return std::nullopt;
    return std::string(text.data(), static_cast<std::size_t>(length));
}

} // namespace

std::optional<Target> LinkTable::target(char letter) const {
    if (!opened_) return std::nullopt;
    const std::string name = {base::lower(letter), ':'};
    const auto link = readLink(opened_.get(), name);
    if (!link || !link->starts_with('/')) return std::nullopt;
    std::error_code error;
    const fs::path real = fs::canonical(*link, error);
    if (error) return std::nullopt;
    const auto disk = readLink(opened_.get(), name + ".disk");
    return Target{real.string(), disk ? parseIdentity(*disk) : std::nullopt};
}

LinkTable findLinkTable(const fs::path& common, pid_t parent, uid_t owner) {
    const Found found = openOwn(AT_FDCWD, common, common, owner);
    if (!found.problem.empty()) return LinkTable(found.problem);
    if (!found.folder) return LinkTable(notRunning);
    LinkTable own = openTable(found.folder.get(), common, std::to_string(parent), owner);
    if (!own.folder().empty() || !own.problem().empty()) return own;
    return onlyTable(found.folder.get(), common, owner);
}

} // namespace fat32format
