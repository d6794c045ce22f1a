// The services, but the profile functions.

#include "fake.h"

#include "platform/drive_identity.h"
#include "platform/http.h"
#include "platform/notification.h"
#include "platform/program_folder.h"
#include "platform/sandbox.h"
#include "platform/shell.h"
#include "platform/system_path.h"
#include "platform/taskbar.h"
#include "platform/user_locale.h"

#include <algorithm>
#include <cstring>

namespace {

using fake::computer;

std::string untilNul(std::string_view text) {
    return std::string(text.substr(0, text.find('\0')));
}

const fake::Drive* driveOf(std::string_view root) {
    const auto found = computer().drives.find(untilNul(root));
    return found == computer().drives.end() ? nullptr : &found->second;
}

platform::DiskFreeSpace::Bytes littleEndian(std::uint64_t value) {
    platform::DiskFreeSpace::Bytes bytes{};
    for (auto& byte : bytes) {
        byte = static_cast<std::uint8_t>(value & 0xFF);
        value >>= 8;
    }
    return bytes;
}

void copyText(const std::string& text, std::span<char> buffer) {
    const std::size_t length = std::min(text.size(), buffer.size() - 1);
    std::memcpy(buffer.data(), text.data(), length);
    buffer[length] = '\0';
}

} // namespace

bool fake::isOnDrive(std::string_view path, const platform::DriveIdentity& drive) {
    return !drive || platform::driveIdentity(path.substr(0, 3)) == drive;
}

namespace platform {

std::uint32_t logicalDriveStrings(std::span<char> buffer) {
    ++computer().driveScans;
    std::string roots;
    for (const auto& [root, drive] : computer().drives)
        roots += root + '\0';
    if (roots.size() + 1 > buffer.size()) return static_cast<std::uint32_t>(roots.size() + 1);
    std::copy(roots.begin(), roots.end(), buffer.begin());
    buffer[roots.size()] = '\0';
    return static_cast<std::uint32_t>(roots.size());
}

std::uint32_t driveType(std::string_view root) {
    const fake::Drive* const drive = driveOf(root);
    return drive == nullptr ? std::uint32_t{DriveNoRootDir} : drive->type;
}

bool diskFreeSpace(std::string_view root, DiskFreeSpace& space) {
    const fake::Drive* const drive = driveOf(root);
    if (drive == nullptr || drive->total == 0) return false;
    space = {littleEndian(drive->free / 2), littleEndian(drive->total), littleEndian(drive->free)};
    return true;
}

bool volumeInformation(std::string_view root, std::span<char> label, std::span<char> fileSystem) {
    const fake::Drive* const drive = driveOf(root);
    if (drive == nullptr) return false;
    copyText(drive->label, label);
    copyText(drive->fileSystem, fileSystem);
    return true;
}

DriveIdentity driveIdentity(std::string_view root) {
    const fake::Drive* const drive = driveOf(root);
    if (drive == nullptr) return {};
    if (!drive->medium.empty()) return {drive->medium};
    return {drive->total == 0 ? std::string() : untilNul(root)};
}

DiskDescription diskDescription(std::string_view root) {
    const fake::Drive* const drive = driveOf(root);
    if (drive == nullptr) return {};
    if (computer().onDiskAsked) computer().onDiskAsked();
    return {drive->maker, drive->model, drive->total, drive->label};
}

bool setVolumeLabel(std::string_view root, std::string_view label, const DriveIdentity& drive) {
    if (driveOf(root) == nullptr || !fake::isOnDrive(root, drive)) return false;
    computer().drives[std::string(root)].label = label;
    return true;
}

bool settleVolume(std::string_view root) {
    computer().settled.emplace_back(root);
    return !fake::enter("settle " + std::string(root)) && computer().settles;
}

std::string missingDriveService() {
    return computer().missingService;
}

void releaseVolumes() {}

std::optional<std::uint32_t> fileAttributes(std::string_view path) {
    const auto found = computer().files.find(std::string(path));
    if (found == computer().files.end()) return std::nullopt;
    return found->second.attributes;
}

std::optional<std::uint64_t> fileLength(std::string_view path) {
    const auto length = computer().lengths.find(std::string(path));
    if (length != computer().lengths.end()) return length->second;
    const auto found = computer().files.find(std::string(path));
    if (found == computer().files.end()) return std::nullopt;
    return found->second.contents.size();
}

FileResult readWholeFile(std::string_view path, std::string& contents) {
    const auto found = computer().files.find(std::string(path));
    contents.clear();
    if (fake::enter("load " + std::string(path))) return computer().failure;
    if (found == computer().files.end()) return FileResult::FileNotFound;
    contents = found->second.contents;
    return FileResult::Ok;
}

namespace {

/// A write that fails leaves the file as it is in the middle of writing: empty.
FileResult store(const std::string& operation, const std::string& path, std::string_view contents) {
    computer().writes.push_back(path);
    const auto result = computer().writeResults.find(path);
    if (result != computer().writeResults.end()) return result->second;
    const bool failed = fake::enter(operation + path);
    computer().files[path].contents = failed ? std::string_view() : contents;
    return failed ? computer().failure : FileResult::Ok;
}

} // namespace

FileResult writeWholeFile(std::string_view path, std::string_view contents, const DriveIdentity& drive) {
    if (!fake::isOnDrive(path, drive)) return FileResult::DiskNotReady;
    return store("write ", std::string(path), contents);
}

FileResult copyFile(std::string_view source, std::string_view target, const DriveIdentity& drive,
                    bool* untouched) {
    if (!fake::isOnDrive(target, drive)) return FileResult::DiskNotReady;
    std::string contents;
    const FileResult read = readWholeFile(source, contents);
    if (read != FileResult::Ok) return read;
    if (computer().sparesCopies && untouched != nullptr && fileLength(target) &&
        computer().files[std::string(target)].contents == contents) {
        *untouched = true;
        return FileResult::Ok;
    }
    const FileResult result = store("copy ", std::string(target), contents);
    if (result != FileResult::Ok) return result;
    computer().files[std::string(target)] = computer().files[std::string(source)];
    computer().files[std::string(target)].attributes &= ~std::uint32_t{FileReadOnly};
    return result;
}

FileResult compareFile(std::string_view path, std::string_view contents, const DriveIdentity& drive) {
    if (!fake::isOnDrive(path, drive)) return FileResult::DiskNotReady;
    if (fake::enter("compare " + std::string(path))) return computer().failure;
    const auto found = computer().files.find(std::string(path));
    if (found == computer().files.end()) return FileResult::FileNotFound;
    return found->second.contents == contents ? FileResult::Ok : FileResult::DeviceIo;
}

FileResult deleteFile(std::string_view path) {
    const auto result = computer().writeResults.find(std::string(path));
    if (result != computer().writeResults.end()) return result->second;
    if (fake::enter("delete " + std::string(path))) return computer().failure;
    return computer().files.erase(std::string(path)) == 0 ? FileResult::FileNotFound : FileResult::Ok;
}

/// The entries directly below a folder; a folder is there by its own entry.
struct FileSearch::State {
    std::vector<FoundFile> found;
    std::size_t next = 0;
};

FileSearch::FileSearch(std::string_view path) : state_(std::make_unique<State>()) {
    if (!path.ends_with("\\*.*")) return;
    const std::string folder(path.substr(0, path.size() - 3));
    if (folder.size() > 3) state_->found = {{".", FileDirectory}, {"..", FileDirectory}};
    for (const auto& [name, file] : computer().files) {
        if (!name.starts_with(folder) || name.size() == folder.size()) continue;
        const std::string rest = name.substr(folder.size());
        if (rest.find('\\') == std::string::npos) state_->found.push_back({rest, file.attributes});
    }
}

FileSearch::~FileSearch() = default;

bool FileSearch::next(FoundFile& found) {
    if (state_->next == state_->found.size()) return false;
    found = state_->found[state_->next++];
    return true;
}

bool showNotification(std::intptr_t window, std::string_view title, std::string_view text) {
    computer().notifications.push_back({window, std::string(title), std::string(text)});
    return true;
}

bool showInTaskbar(std::intptr_t, TaskbarProgress, double) {
    return false; // its windows have no bars that could tell
}

std::string programFolder() {
    return computer().folder;
}

std::string settingsFolder() {
    return computer().settingsFolder;
}

std::string systemPath(std::string_view path) {
    return std::string(path);
}

std::string decimalSeparator() {
    return computer().separator;
}

struct InternetSession::State {};

InternetSession::InternetSession(std::string_view agent, std::int32_t accessType) {
    computer().agents.push_back(std::string(agent) + " " + std::to_string(accessType));
}

InternetSession::~InternetSession() = default;

struct InternetRequest::State {
    std::string url;
    std::string_view rest; ///< of what the computer's web holds
    std::uint64_t read = 0;
    bool lost = true; ///< a connection; also one that there never was
};

InternetRequest::InternetRequest(InternetSession&, std::string_view url, std::uint32_t flags)
    : state_(std::make_unique<State>()) {
    computer().fetched.emplace_back(url);
    computer().fetchFlags.push_back(flags);
    state_->url = url;
    const auto found = computer().web.find(state_->url);
    if (fake::enter("fetch " + state_->url) || found == computer().web.end()) return;
    state_->rest = found->second;
    state_->lost = false;
}

InternetRequest::~InternetRequest() = default;

std::size_t InternetRequest::read(std::span<char> buffer) {
    if (fake::enter("read " + state_->url)) {
        state_->rest = {};
        state_->lost = true;
    }
    const std::size_t length = std::min({buffer.size(), state_->rest.size(), computer().longestRead});
    std::copy_n(state_->rest.begin(), length, buffer.begin());
    state_->rest.remove_prefix(length);
    state_->read += length;
    return length;
}

std::optional<InternetRequest::Silence> InternetRequest::silence() const {
    return computer().silence;
}

bool InternetRequest::complete() const {
    return !state_->lost && state_->rest.empty() && state_->read >= computer().announcedLength.value_or(0);
}

std::optional<std::uint64_t> InternetRequest::announcedLength() const {
    return computer().announcedLength;
}

int shellExecute(ShellOwner owner, std::string_view verb, std::string_view file, std::string_view parameters,
                 std::string_view directory, int showCommand) {
    fake::enter("open " + std::string(file));
    computer().shellCalls.push_back({owner, std::string(verb), std::string(file), std::string(parameters),
                                     std::string(directory), showCommand});
    const auto code = computer().shellCodes.find(std::string(file));
    return code == computer().shellCodes.end() ? int{ShellAccepted} : code->second;
}

bool isSandboxed() {
    return computer().sandboxed;
}

int showFolder(ShellOwner owner, std::string_view folder) {
    return shellExecute(owner, "open", folder, "", "", showNormal);
}

bool startOpenWithChooser(std::string_view commandLine) {
    computer().choosers.emplace_back(commandLine);
    return true;
}

bool shellNotifyIcon(NotifyIcon message, const NotifyIconRecord& record) {
    computer().trayCalls.push_back({message, record});
    if (computer().onTray) computer().onTray(message);
    return false;
}

namespace {

std::intptr_t defaultProcedure(std::intptr_t, std::uint32_t message, std::uintptr_t, std::intptr_t) {
    computer().defaultMessages.push_back(message);
    return fake::defaultResult;
}

} // namespace

WindowProcedure setWindowProcedure(std::intptr_t window, WindowProcedure next) {
    computer().routedWindows.push_back(window);
    if (computer().onProcedure) computer().onProcedure();
    const WindowProcedure previous =
        computer().procedure == nullptr ? defaultProcedure : computer().procedure;
    computer().procedure = next;
    return previous;
}

std::intptr_t callWindowProcedure(WindowProcedure previous, std::intptr_t window, std::uint32_t message,
                                  std::uintptr_t wParam, std::intptr_t lParam) {
    return previous(window, message, wParam, lParam);
}

} // namespace platform
