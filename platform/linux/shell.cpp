// The shell's part is played by the desktop's own commands, xdg-open and xdg-mime:
// https://www.freedesktop.org/wiki/Software/xdg-utils/
#include "platform/shell.h"
#include "base/letters.h"

#include "platform/http_address.h"
#include "platform/linux/files/file_io.h"
#include "platform/linux/files/path.h"
#include "platform/linux/process/desktop_command.h"
#include "platform/linux/process/file_browser.h"
#include "platform/linux/process/open_with_portal.h"
#include "platform/sandbox.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <optional>
#include <string>

namespace platform {

namespace {

constexpr std::string_view chooserCommand = "rundll32.exe shell32.dll,OpenAs_RunDLL ";
constexpr auto associationPatience = std::chrono::seconds(2); // the window does not answer meanwhile

/// The address to pass on; "www." alone makes one, as it does on Windows.
std::optional<std::string> webAddress(std::string_view file) {
    if (base::startsWithNoCase(file, "www.")) return httpAddress("http://" + std::string(file));
    return httpAddress(file);
}

/// "mailto:", "file:" and the like; one letter is a drive.
bool hasScheme(std::string_view file) {
    const std::size_t length = file.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                                      "0123456789+-.");
    return length != std::string_view::npos && length > 1 && file[length] == ':';
}

/// Whatever is not on the shell's list of codes is "access denied".
int start(const std::string& target) {
    return linux::startDetached({"xdg-open", target}) ? ShellAccepted : ShellAccessDenied;
}

std::string firstLine(const std::string& text) {
    return text.substr(0, text.find_first_of("\r\n"));
}

/// Where nothing knows a program for pages, or even what a page is, xdg-open takes the one that the user
/// names.
bool isForNamedBrowser(const std::string& path) {
    const char* browser = std::getenv("BROWSER"); // NOLINT(concurrency-mt-unsafe): nobody sets it
    return browser != nullptr && *browser != '\0' && path.ends_with(".html");
}

/// Whether a program goes with the file's type. When that cannot be found out xdg-open shall see for itself:
/// in a sandbox it asks the portal, and nothing in there knows the programs outside.
bool hasProgram(const std::string& path) {
    if (isSandboxed() || isForNamedBrowser(path)) return true;
    const auto deadline = std::chrono::steady_clock::now() + associationPatience;
    const auto type = linux::outputOf({"xdg-mime", "query", "filetype", path}, deadline);
    if (!type) return true;
    const std::string name = firstLine(*type).substr(0, type->find(';')); // some versions add "; charset="
    if (name.empty()) return false;
    const auto program = linux::outputOf({"xdg-mime", "query", "default", name}, deadline);
    return !program || !firstLine(*program).empty();
}

/// Finds the file or folder; ShellAccepted, or the code for why there is none.
int find(std::string_view file, linux::Place& place) {
    switch (linux::locate(file, place)) {
    case FileResult::Ok:
        break;
    case FileResult::PathNotFound:
    case FileResult::DiskNotReady:
        return ShellPathNotFound;
    default:
        return ShellAccessDenied;
    }
    if (place.isFolder() || place.isFile()) return ShellAccepted;
    if (place.asksForFolder) return ShellPathNotFound;
    return place.info ? ShellAccessDenied : ShellFileNotFound; // a pipe or a device is nothing to open
}

/// The slash at the end makes it a folder for whoever is given it: some openers look at the end of the name
/// only, and start what is called "Fotos.desktop".
int show(const linux::Place& folder) {
    const std::string path = folder.isRoot ? folder.folderPath : folder.folderPath + folder.name + "/";
    return linux::askFileBrowserToShow(path) ? ShellAccepted : start(path);
}

int openPath(std::string_view file) {
    linux::Place place;
    const int found = find(file, place);
    if (found != ShellAccepted) return found;
    if (place.isFolder()) return show(place);
    const std::string path = place.folderPath + place.name;
    return hasProgram(path) ? start(path) : ShellNoAssociation;
}

} // namespace

// Parameters and directory belong to programs, and here only documents, folders and addresses are opened.
int shellExecute(ShellOwner /*owner*/, std::string_view verb, std::string_view file,
                 std::string_view /*parameters*/, std::string_view /*directory*/, int /*showCommand*/) {
    const bool opens = verb.empty() || (verb.size() == 4 && base::startsWithNoCase(verb, "open"));
    if (!opens) return ShellNoAssociation;
    if (file.empty()) return ShellFileNotFound;
    if (const auto address = webAddress(file)) return start(*address);
    if (hasScheme(file))
        return ShellNoAssociation; // nothing that a server can send may start more than a browser
    return openPath(file);
}

int showFolder(ShellOwner /*owner*/, std::string_view folder) {
    linux::Place place;
    const int found = find(folder, place);
    if (found != ShellAccepted) return found;
    return place.isFolder() ? show(place) : ShellPathNotFound;
}

bool startOpenWithChooser(std::string_view commandLine) {
    if (!base::startsWithNoCase(commandLine, chooserCommand)) return false;
    linux::Place place;
    linux::UniqueFd file;
    return find(commandLine.substr(chooserCommand.size()), place) == ShellAccepted && place.isFile() &&
           linux::openToRead(place, file) == FileResult::Ok && linux::askPortalToOpen(file.get());
}

} // namespace platform
