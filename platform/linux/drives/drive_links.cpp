#include "platform/linux/drives/drive_links.h"

#include "base/letters.h"
#include "base/whole_number.h"
#include "platform/linux/base/folder_reader.h"
#include "platform/linux/base/runtime_folder.h"
#include "platform/linux/base/unique_fd.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace platform::linux {

namespace {

/// That of all running programs.
constexpr const char* commonName = "orvanta-usbtool";
constexpr mode_t usersAlone = S_IRWXU;
constexpr mode_t others = S_IWGRP | S_IWOTH;

/// What a link's name consists of behind its letter; with the latter ends it is not in its place yet.
constexpr std::array<std::string_view, 4> nameEnds = {":", ":.disk", ":new", ":.disknew"};

/// A folder, or why it is not to be used.
struct Folder {
    UniqueFd fd;
    std::string problem; ///< empty as well when there is no such folder
};

Folder refused(const std::string& path, const std::string& reason) {
    return {{}, path + ": " + reason};
}

/// It may be the one of another user: "su" and "sudo -E" leave the variable as it is.
Folder openRuntimeFolder() {
    const std::string path = runtimeFolder();
    UniqueFd folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    struct stat status = {};
    if (!folder && errno == ENOENT) return {};
    if (!folder || fstat(folder.get(), &status) != 0) return refused(path, std::strerror(errno));
    if (status.st_uid != geteuid()) return refused(path, "belongs to another user");
    if ((status.st_mode & others) != 0) return refused(path, "others may write to it");
    return {std::move(folder), {}};
}

/// Somebody may have put a link there, or a folder that others may write to.
UniqueFd openOwn(int parent, const std::string& name) {
    UniqueFd folder(openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status = {};
    if (!folder || fstat(folder.get(), &status) != 0) return {};
    const bool isOwn = status.st_uid == geteuid() && (status.st_mode & ACCESSPERMS) == usersAlone;
    return isOwn ? std::move(folder) : UniqueFd();
}

Folder makeOwn(int parent, const std::string& name) {
    const std::string path = runtimeFolder() + " in it: " + name;
    if (mkdirat(parent, name.c_str(), usersAlone) != 0 && errno != EEXIST)
        return refused(path, std::strerror(errno));
    UniqueFd folder = openOwn(parent, name);
    if (!folder) return refused(path, "is no folder that is the user's alone");
    return {std::move(folder), {}};
}

std::string ownName() {
    return std::to_string(getpid());
}

std::vector<std::string> namesIn(int folder) {
    std::vector<std::string> names;
    FolderReader reader(folder);
    while (const char* name = reader.next())
        names.emplace_back(name);
    return names;
}

bool isLinkName(std::string_view name) {
    if (name.empty() || name[0] < 'a' || name[0] > 'z') return false;
    return std::find(nameEnds.begin(), nameEnds.end(), name.substr(1)) != nameEnds.end();
}

std::string linkName(char letter) {
    return {base::lower(letter), ':'};
}

std::string diskName(char letter) {
    return linkName(letter) + ".disk";
}

/// Only links.
void removeLink(int folder, const std::string& name) {
    struct stat status = {};
    if (fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(status.st_mode))
        unlinkat(folder, name.c_str(), 0);
}

/// With the links in it that a program like this one made, when there is nothing else in it.
void removeFolder(int parent, const std::string& name) {
    const UniqueFd folder = openOwn(parent, name);
    if (!folder) return;
    for (const std::string& link : namesIn(folder.get()))
        if (isLinkName(link)) removeLink(folder.get(), link);
    unlinkat(parent, name.c_str(), AT_REMOVEDIR);
}

bool belongsToAnother(pid_t process) {
    struct stat status = {};
    return stat(("/proc/" + std::to_string(process)).c_str(), &status) == 0 && status.st_uid != geteuid();
}

/// Whether a folder is that of a process that is no longer there. Another user's has been given its id since:
/// root may signal that one, too, and everybody else learns it from being refused.
bool isOfADeadProcess(const std::string& name) {
    const auto process = base::wholeNumber<pid_t>(name);
    if (!process || *process <= 0) return false;
    if (kill(*process, 0) != 0) return errno == ESRCH || errno == EPERM;
    return geteuid() == 0 && belongsToAnother(*process);
}

/// What a program left behind that did not end in good order.
void removeFoldersOfTheDead(int common) {
    for (const std::string& name : namesIn(common))
        if (isOfADeadProcess(name)) removeFolder(common, name);
}

/// Empty when there is no such link.
std::string targetOf(int folder, const std::string& name) {
    std::array<char, PATH_MAX> target = {};
    const ssize_t length = readlinkat(folder, name.c_str(), target.data(), target.size());
    return {target.data(), length < 0 ? 0 : static_cast<std::size_t>(length)};
}

/// Never a moment without the link, nor one with half of it.
void setLink(int folder, const std::string& name, const std::string& target) {
    if (targetOf(folder, name) == target) return;
    if (target.empty()) return removeLink(folder, name);
    const std::string fresh = name + "new";
    removeLink(folder, fresh);
    const bool done = symlinkat(target.c_str(), folder, fresh.c_str()) == 0 &&
                      renameat(folder, fresh.c_str(), folder, name.c_str()) == 0;
    if (!done) removeLink(folder, name); // no drive rather than another one
}

/// The link never leads to another disk than the one beside it tells of.
void setDrive(int folder, char letter, const DriveLinks::Target& target) {
    if (targetOf(folder, diskName(letter)) != target.disk) removeLink(folder, linkName(letter));
    setLink(folder, diskName(letter), target.disk);
    setLink(folder, linkName(letter), target.path);
}

void removeOthers(int folder, const DriveLinks::Targets& targets) {
    for (const std::string& name : namesIn(folder)) {
        if (!isLinkName(name)) continue;
        if (!targets.contains(base::upper(name[0]))) removeLink(folder, name);
    }
}

} // namespace

std::string DriveLinks::tryToShow(const Targets& targets) {
    const Folder runtime = openRuntimeFolder();
    if (!runtime.fd) return runtime.problem;
    const Folder common = makeOwn(runtime.fd.get(), commonName);
    if (!common.fd) return common.problem;
    if (!shown_) removeFoldersOfTheDead(common.fd.get());
    const Folder own = makeOwn(common.fd.get(), ownName());
    if (!own.fd) return own.problem;
    shown_ = true;
    removeOthers(own.fd.get(), targets);
    for (const auto& [letter, target] : targets)
        setDrive(own.fd.get(), letter, target);
    return {};
}

void DriveLinks::show(const Targets& targets) {
    const std::string problem = tryToShow(targets);
    complaint_.tell(problem.empty() ? problem : "No formatter can be told the drives. " + problem);
}

void DriveLinks::remove() {
    if (!shown_) return;
    shown_ = false;
    const Folder runtime = openRuntimeFolder();
    if (!runtime.fd) return;
    if (const UniqueFd common = openOwn(runtime.fd.get(), commonName)) removeFolder(common.get(), ownName());
    unlinkat(runtime.fd.get(), commonName, AT_REMOVEDIR); // unless another program runs
}

} // namespace platform::linux
