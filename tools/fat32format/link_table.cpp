#include "tools/fat32format/link_table.h"

#include <charconv>
#include <csignal>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace fat32format {

namespace {

namespace fs = std::filesystem;

bool isThere(const fs::path& path) {
    struct stat info {};
    return lstat(path.c_str(), &info) == 0;
}

bool isUsersAlone(const fs::path& path) {
    struct stat info {};
    if (lstat(path.c_str(), &info) != 0) return false;
    return S_ISDIR(info.st_mode) && info.st_uid == geteuid() && (info.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

/// Whether a folder's name is the id of one of the user's processes.
bool isOfALivingProcess(const fs::path& folder) {
    const std::string name = folder.filename();
    pid_t process = 0;
    const auto [end, failure] = std::from_chars(name.data(), name.data() + name.size(), process);
    if (failure != std::errc() || end != name.data() + name.size() || process <= 0) return false;
    return kill(process, 0) == 0;
}

std::vector<fs::path> livingFolders(const fs::path& common) {
    std::vector<fs::path> folders;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(common, error))
        if (isOfALivingProcess(entry.path())) folders.push_back(entry.path());
    return folders;
}

LinkTable trusted(const fs::path& folder) {
    if (isUsersAlone(folder)) return {folder, {}};
    return {{}, "Others than the user may change the table of drives in " + folder.string() + '.'};
}

} // namespace

LinkTable findLinkTable(const fs::path& common, pid_t parent) {
    const std::string notRunning = "There is no table of drives: the program orvanta-usbtool does not run.";
    if (!isThere(common)) return {{}, notRunning};
    if (LinkTable table = trusted(common); table.folder.empty()) return table;
    if (const fs::path own = common / std::to_string(parent); isThere(own)) return trusted(own);
    const std::vector<fs::path> living = livingFolders(common);
    if (living.empty()) return {{}, notRunning};
    if (living.size() > 1)
        return {{},
                "The program orvanta-usbtool runs more than once, each time with drive letters of its own."};
    return trusted(living.front());
}

} // namespace fat32format
