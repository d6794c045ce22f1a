#include "platform/linux/drive_links.h"

#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <vector>

namespace platform::posix {

namespace {

namespace fs = std::filesystem;

/// One of the XDG base directories; without the variable the place that systems use in fact.
fs::path runtimeFolder() {
    const char* given = std::getenv("XDG_RUNTIME_DIR"); // NOLINT(concurrency-mt-unsafe): nobody sets it
    if (given != nullptr && given[0] == '/') return given;
    return "/run/user/" + std::to_string(getuid());
}

/// That of all running programs.
fs::path commonFolder() {
    return runtimeFolder() / "orvanta-usbtool";
}

fs::path linkFolder() {
    return commonFolder() / std::to_string(getpid());
}

bool createFolder(const fs::path& folder) {
    std::error_code error;
    fs::create_directory(folder, error);
    fs::permissions(folder, fs::perms::owner_all, error);
    return !error;
}

std::vector<fs::path> entriesOf(const fs::path& folder) {
    std::vector<fs::path> entries;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error))
        entries.push_back(entry.path());
    return entries;
}

/// Whether a folder is that of a process that is no longer there.
bool isOfADeadProcess(const fs::path& folder) {
    const std::string name = folder.filename();
    pid_t process = 0;
    const auto [end, failure] = std::from_chars(name.data(), name.data() + name.size(), process);
    if (failure != std::errc() || end != name.data() + name.size() || process <= 0) return false;
    return kill(process, 0) != 0 && errno == ESRCH;
}

/// What a program left behind that did not end in good order.
void removeFoldersOfTheDead() {
    std::error_code error;
    for (const fs::path& folder : entriesOf(commonFolder()))
        if (isOfADeadProcess(folder)) fs::remove_all(folder, error);
}

std::string linkName(char letter) {
    return {static_cast<char>(letter - 'A' + 'a'), ':'};
}

/// Never a moment without the link, nor one with half of it.
void setLink(const fs::path& folder, char letter, const std::string& target) {
    const fs::path link = folder / linkName(letter);
    std::error_code error;
    if (fs::read_symlink(link, error) == target && !error) return;
    const fs::path fresh = folder / (linkName(letter) + "new");
    fs::remove(fresh, error);
    fs::create_symlink(target, fresh, error);
    if (!error) fs::rename(fresh, link, error);
    if (error) fs::remove(link, error); // no drive rather than another one
}

void removeOthers(const fs::path& folder, const DriveLinks::Targets& targets) {
    std::error_code error;
    for (const fs::path& link : entriesOf(folder)) {
        const std::string name = link.filename();
        const char letter = static_cast<char>(name[0] - 'a' + 'A');
        if (name.size() == 2 && name[1] == ':' && !targets.contains(letter)) fs::remove(link, error);
    }
}

} // namespace

void DriveLinks::show(const Targets& targets) {
    std::error_code error;
    if (!fs::is_directory(runtimeFolder(), error)) return;
    const fs::path folder = linkFolder();
    if (!createFolder(commonFolder()) || !createFolder(folder)) return;
    if (!shown_) removeFoldersOfTheDead();
    shown_ = true;
    removeOthers(folder, targets);
    for (const auto& [letter, target] : targets)
        setLink(folder, letter, target);
}

void DriveLinks::remove() {
    if (!shown_) return;
    shown_ = false;
    std::error_code error;
    fs::remove_all(linkFolder(), error);
    fs::remove(commonFolder(), error); // unless another program runs
}

} // namespace platform::posix
