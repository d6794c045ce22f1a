#include "tools/fat32format/linux/link_table.h"

#include "base/letters.h"
#include "base/whole_number.h"
#include "tools/fat32format/linux/identity_text.h"
#include "tools/fat32format/linux/kernel_text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
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

/// Whether a folder's name is the id of one of that user's processes. One that ended badly leaves its folder,
/// and its id may be anybody's by now; no signal tells it, since root may send one to everybody.
bool isOfAProcessOf(uid_t owner, const std::string& name) {
    const auto process = base::wholeNumber<pid_t>(name);
    if (!process || *process <= 0) return false;
    struct stat info {};
    return stat(("/proc/" + std::to_string(*process)).c_str(), &info) == 0 && info.st_uid == owner;
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

LinkTable openTable(int common, const TablePlace& place, const std::string& name) {
    if (!isOfAProcessOf(place.owner, name)) return {};
    Found found = openOwn(common, name, place.folder / name, place.owner);
    if (!found.problem.empty()) return LinkTable(found.problem);
    if (!found.folder) return {};
    return {place.folder / name, std::move(found.folder)};
}

LinkTable onlyTable(int common, const TablePlace& place) {
    FolderNames all = readNames(common);
    if (all.error != 0)
        return LinkTable("The table of drives in " + place.folder.string() + " cannot be read.");
    std::erase_if(all.names, [&](const std::string& name) { return !isOfAProcessOf(place.owner, name); });
    if (all.names.empty()) return {};
    if (all.names.size() > 1)
        return LinkTable(
            "The program orvanta-usbtool runs more than once, each time with drive letters of its own.");
    return openTable(common, place, all.names.front());
}

bool isNone(const LinkTable& table) {
    return table.folder().empty() && table.problem().empty();
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

LinkTable findLinkTable(const TablePlace& own, const std::optional<TablePlace>& caller, pid_t parent) {
    std::vector<TablePlace> places = {own};
    if (caller) places.push_back(*caller);
    std::vector<UniqueFd> folders;
    std::string problem;
    for (const TablePlace& place : places) {
        Found common = openOwn(AT_FDCWD, place.folder, place.folder, place.owner);
        LinkTable table = common.folder ? openTable(common.folder.get(), place, std::to_string(parent))
                                        : LinkTable(common.problem);
        if (!table.folder().empty()) return table;
        if (problem.empty()) problem = table.problem();
        folders.push_back(std::move(common.folder));
    }
    if (!problem.empty()) return LinkTable(problem);
    for (std::size_t i = places.size(); i-- > 0;) {
        if (!folders[i]) continue;
        LinkTable only = onlyTable(folders[i].get(), places[i]);
        if (!isNone(only)) return only;
    }
    return LinkTable(notRunning);
}

} // namespace fat32format
