#include "platform/program_folder.h"

#include "build_choices.h"
#include "platform/linux/base/file_error.h"
#include "platform/linux/files/own_folders.h"

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace platform {

namespace {

constexpr const char* settingsFile = "Settings.ini";
constexpr const char* folderName = "orvanta-usbtool";
constexpr const char* nobodysFolder = "nobody"; // never there: nothing is written
constexpr mode_t forOwner = 0700;

/// Whether the process may write a file or into a folder, on a medium that can be written.
bool isWritable(const std::string& path) {
    return faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
}

/// The folder takes new files, and the settings file in it, if there is one, can be changed.
bool takesSettings(const std::string& folder) {
    const std::string file = folder + "/" + settingsFile;
    return isWritable(folder) && (access(file.c_str(), F_OK) != 0 || isWritable(file));
}

std::string homeFolder() {
    // Not threaded yet when it is first asked, and nothing else in the program sets the environment.
    const char* home = std::getenv("HOME"); // NOLINT(concurrency-mt-unsafe)
    if (home != nullptr && home[0] == '/') return home;
    std::vector<char> buffer(16UL * 1024);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr)
        return {};
    return entry.pw_dir[0] == '/' ? entry.pw_dir : std::string();
}

} // namespace

namespace linux {

/// By the rules of XDG base directories a relative path in the variable does not
/// count.
std::string userConfigFolder() {
    const char* config = std::getenv("XDG_CONFIG_HOME"); // NOLINT(concurrency-mt-unsafe)
    std::string base = config != nullptr && config[0] == '/' ? config : std::string();
    if (base.empty()) {
        base = homeFolder();
        if (base.empty()) return {};
        base += "/.config";
    }
    return (std::filesystem::path(base) / folderName).lexically_normal().string();
}

FileResult createOwnFolder(const std::filesystem::path& folder) {
    if (mkdir(folder.c_str(), forOwner) == 0 || errno == EEXIST) return FileResult::Ok;
    if (errno != ENOENT || folder.parent_path() == folder) return fileResult(errno);
    const FileResult result = createOwnFolder(folder.parent_path());
    if (result != FileResult::Ok) return result;
    return fileResult(mkdir(folder.c_str(), forOwner) == 0 || errno == EEXIST ? 0 : errno);
}

} // namespace linux

std::string programFolder() {
    // The link's target keeps its folder when the program's file is replaced while it runs.
    static const std::string folder = [] {
        std::error_code error;
        const auto file = std::filesystem::read_symlink("/proc/self/exe", error);
        return error ? std::string() : file.parent_path().string();
    }();
    return folder;
}

std::string settingsFolder() {
    std::string program = programFolder();
    if (base::portable && takesSettings(program)) return program;
    std::string own = linux::userConfigFolder();
    if (own.empty()) return base::portable ? program : program + "/" + nobodysFolder;
    // When it fails, writing the settings does, and that is reported there.
    static_cast<void>(linux::createOwnFolder(own));
    return own;
}

} // namespace platform
