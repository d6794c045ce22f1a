#include "platform/linux/drive_links.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <vector>

namespace platform::posix {

namespace {

namespace fs = std::filesystem;

/// https://specifications.freedesktop.org/basedir-spec/latest/
fs::path runtimeFolder() {
    const char* given = std::getenv("XDG_RUNTIME_DIR"); // NOLINT(concurrency-mt-unsafe): nobody sets it
    if (given != nullptr && given[0] == '/') return given;
    return "/run/user/" + std::to_string(getuid());
}

fs::path linkFolder() {
    return runtimeFolder() / "orvanta-usbtool";
}

std::string linkName(char letter) {
    return {static_cast<char>(letter - 'A' + 'a'), ':'};
}

/// Never a moment without the link, nor one with half of it.
void setLink(const fs::path& folder, char letter, const std::string& target) {
    const fs::path link = folder / linkName(letter);
    std::error_code error;
    if (fs::read_symlink(link, error) == target && !error) return;
    const fs::path fresh = folder / (linkName(letter) + std::to_string(getpid()));
    fs::create_symlink(target, fresh, error);
    if (!error) fs::rename(fresh, link, error);
}

void removeOthers(const fs::path& folder, const DriveLinks::Targets& targets) {
    std::vector<fs::path> obsolete;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        const std::string name = entry.path().filename();
        const char letter = static_cast<char>(name[0] - 'a' + 'A');
        if (name.size() == 2 && name[1] == ':' && !targets.contains(letter)) obsolete.push_back(entry.path());
    }
    for (const fs::path& link : obsolete)
        fs::remove(link, error);
}

} // namespace

void DriveLinks::show(const Targets& targets) {
    if (targets == shown_) return;
    shown_ = targets;
    std::error_code error;
    if (!fs::is_directory(runtimeFolder(), error)) return;
    const fs::path folder = linkFolder();
    fs::create_directory(folder, error);
    fs::permissions(folder, fs::perms::owner_all, error);
    if (error) return;
    removeOthers(folder, targets);
    for (const auto& [letter, target] : targets)
        setLink(folder, letter, target);
}

void DriveLinks::remove() {
    if (shown_.empty()) return;
    shown_.clear();
    removeOthers(linkFolder(), {});
    std::error_code error;
    fs::remove(linkFolder(), error);
}

} // namespace platform::posix
