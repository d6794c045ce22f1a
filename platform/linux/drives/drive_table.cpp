#include "platform/linux/drives/drive_table.h"

#include "base/letters.h"
#include "platform/linux/drives/drive_links.h"
#include "platform/linux/drives/drives_ini.h"
#include "platform/linux/drives/udisks_drives.h"

#include <chrono>
#include <utility>

namespace platform::linux {

namespace {

using Clock = std::chrono::steady_clock;

struct Table {
    IniDrives file;
    UdisksDrives volumes;
    DriveLinks links;
    std::function<void(const std::string&)> listener;
    bool listAtHand = false;
    bool identityAtHand = false;
    Clock::time_point listed; ///< when listDrives() asked
};

Table& table() {
    static Table theTable;
    return theTable;
}

} // namespace

char driveLetter(std::string_view root) {
    root = root.substr(0, root.find('\0'));
    if (root.size() == 3 && (root[2] == '\\' || root[2] == '/')) root.remove_suffix(1);
    if (root.size() != 2 || root[1] != ':') return 0;
    const char letter = base::upper(root[0]);
    return base::isLetter(letter) ? letter : '\0';
}

DriveSource& driveSource() {
    if (table().file.load()) return table().file;
    return table().volumes;
}

std::optional<std::string> driveFolder(char letter) {
    DriveSource& drives = driveSource();
    std::optional<std::string> folder = drives.folder(base::upper(letter));
    if (!folder) driveMissed(drives);
    return folder;
}

void mirrorDriveTable() {
    DriveSource& drives = driveSource();
    DriveLinks::Targets targets;
    for (const char letter : drives.letters())
        if (const std::string target = drives.target(letter); !target.empty())
            targets[letter] = {target, drives.disk(letter)};
    table().links.show(targets);
}

void listDrives() {
    if (std::exchange(table().listAtHand, false)) return;
    table().listed = Clock::now();
    driveSource().refresh();
}

void listToIdentify(char letter) {
    constexpr auto young = std::chrono::seconds(1); // a question that is open meanwhile may stay so for long
    DriveSource& drives = driveSource();
    const bool atHand = std::exchange(table().identityAtHand, false) && Clock::now() - table().listed < young;
    if (!atHand || !drives.isOnListedDisk(letter)) drives.refresh();
}

ListAtHand::ListAtHand() {
    table().listAtHand = true;
    table().identityAtHand = true;
}

ListAtHand::~ListAtHand() {
    table().listAtHand = false;
    table().identityAtHand = false;
}

void drivesListed(const std::string& letters) {
    if (table().listener) table().listener(letters);
}

void driveMissed(DriveSource& drives) {
    drivesListed(drives.letters());
}

void onDrivesListed(std::function<void(const std::string& letters)> listener) {
    table().listener = std::move(listener);
}

void releaseDriveTable() {
    table().volumes.release();
    table().links.remove();
}

} // namespace platform::linux
