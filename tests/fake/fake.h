// A computer in memory: the third backend, for tests that need no display, no network and no disk.
#pragma once

#include "platform/device_events.h"
#include "platform/files.h"
#include "platform/http.h"
#include "platform/notify_icon.h"
#include "platform/volumes.h"
#include "toolkit/form.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace fake {

struct Drive {
    std::uint32_t type = platform::DriveRemovable;
    std::uint64_t total = 0; ///< bytes; 0 is a drive without a medium
    std::uint64_t free = 0;
    std::string label;
    std::string fileSystem;
    std::string maker = {}; ///< of the disk, as the next
    std::string model = {};
    std::string medium = {}; ///< what tells it from others; empty: there is one for each root
};

struct File {
    std::string contents;
    std::uint32_t attributes = platform::FileArchive;
};

struct Message {
    std::string text;
    int style = 0;
    std::string title;
};

struct ShellCall {
    std::int64_t owner = 0;
    std::string verb, file, parameters, directory;
    int showCommand = 0;
};

struct Notification {
    std::intptr_t window = 0;
    std::string title, text;
};

struct TrayCall {
    platform::NotifyIcon message{};
    platform::NotifyIconRecord record{};
};

struct Computer {
    std::map<std::string, Drive> drives; ///< by root, as in `E:\`
    std::map<std::string, File> files;   ///< by path, as the program names it
    /// Of files that are said to be larger than they are, by path.
    std::map<std::string, std::uint64_t> lengths;
    std::map<std::string, std::string> web;       ///< contents by address; what is missing cannot be reached
    std::size_t longestRead = SIZE_MAX;           ///< bytes that one read from the web gives at the most
    std::optional<std::uint64_t> announcedLength; ///< of every download, true or not
    std::optional<platform::InternetRequest::Silence> silence; ///< of the server
    std::chrono::milliseconds clockStep{4}; ///< between two looks at the clock; a pump is due by then
    std::string separator = ",";
    std::string folder = "/opt/tool";
    std::string settingsFolder = "/opt/tool";

    /// Answers a message box; the default presses OK, or Yes.
    std::function<int(const Message&)> answer;
    /// Runs in the pump, as events do.
    std::function<void()> onPump;
    /// Runs while a wait paints.
    std::function<void()> onPaint;
    /// Runs when a window is shown modally, in place of the user.
    std::function<void(toolkit::Form&)> onModal;
    /// Runs when a window gets a procedure, and when something is done to a tray icon.
    std::function<void()> onProcedure;
    std::function<void(platform::NotifyIcon)> onTray;
    /// Runs while a disk is asked what it is, which takes time.
    std::function<void()> onDiskAsked;
    /// Shell code by file; 33 where there is none.
    std::map<std::string, int> shellCodes;
    /// What writing to a path comes to.
    std::map<std::string, platform::FileResult> writeResults;
    bool settles = true;
    bool sparesCopies = false; ///< a copy that is there already is left alone
    bool active = true;        ///< the user works with one of the program's windows
    bool sandboxed = false;
    std::string missingService; ///< as missingDriveService() tells it
    /// Makes an operation fail; it is given as the journal has it. File operations come to `failure` then,
    /// and whatever is fetched ends there.
    std::function<bool(const std::string& operation)> fails;
    platform::FileResult failure = platform::FileResult::DiskFull;
    /// Takes the place of the two profile functions that read: fills the buffer and returns what they return.
    std::function<std::uint32_t(std::span<char> buffer, const std::string& section)> profile;

    // What the program did.
    std::vector<Message> messages;
    std::vector<ShellCall> shellCalls;
    std::vector<std::string> choosers;
    std::vector<TrayCall> trayCalls;
    std::vector<Notification> notifications;
    std::vector<std::string> fetched; ///< addresses
    std::vector<std::uint32_t> fetchFlags;
    std::vector<std::string> agents;  ///< agent text and access type
    std::vector<std::string> writes;  ///< paths, in order
    std::vector<std::string> settled; ///< roots
    std::vector<std::string> windows; ///< "open frmMain", "modal frmAuswahl", "close frmMain"
    /// All of it in order: "fetch address", "read address", "load path", "write path", "copy path", "compare
    /// path", "delete path", "settle root", "pump", "message title", "open file".
    std::vector<std::string> journal;
    std::map<std::string, std::string> owners; ///< name of the owner of a window that was shown, by its name
    int pumps = 0;
    int paints = 0; ///< while something was waited for
    int heldEventsAskedFor = 0;
    int wakeUps = 0;                         ///< by jobs that were done; to be looked at when none runs
    std::chrono::milliseconds longestPump{}; ///< what the last one was given
    int quits = 0;
    int driveScans = 0;
    platform::WindowProcedure procedure = nullptr;
    std::vector<std::intptr_t> routedWindows;   ///< windows that got a procedure, in order
    std::vector<std::uint32_t> defaultMessages; ///< messages that reached the procedure that was there before
};

/// What the window's own procedure returns.
constexpr std::intptr_t defaultResult = 77;
/// Handle of every window.
constexpr std::intptr_t windowHandle = 4711;

/// The one there is.
Computer& computer();

/// A new one: nothing in it, no ending under way.
void reset();

/// Enters the operation into the journal; true when it is to fail.
bool enter(const std::string& operation);

/// Whether the path leads to that drive; every one does when none is given.
bool isOnDrive(std::string_view path, const platform::DriveIdentity& drive);

/// Where a loaded picture comes from: a path, or "icon 103"; empty for none.
std::string nameOf(const base::Picture& picture);

} // namespace fake
