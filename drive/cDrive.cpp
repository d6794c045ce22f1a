#include "drive/cDrive.h"

#include "drive/drive_name.h"
#include "platform/basINI.h"
#include "platform/cTray.h"
#include "platform/files.h"
#include "platform/profile.h"
#include "toolkit/picture.h"

#include <array>
#include <cstdint>
#include <vector>

namespace {

constexpr const char* severalSticks = "-1";
constexpr const char* noStick = "-2";

/// The walk compares the position of the last NUL with the length of what is left, so it ends before the last
/// of two or more roots: the last drive is never examined. This is intended.
std::vector<std::string> rootsToExamine(std::string text) {
    std::vector<std::string> roots;
    std::size_t position = 0;
    while (position < text.size()) {
        const std::size_t end = text.find('\0');
        if (end == std::string::npos) break;
        position = end + 1;
        roots.push_back(text.substr(0, position));
        text.erase(0, position);
    }
    return roots;
}

/// With 16 roots or more the buffer is too small and stays blank: no drive is found. This is intended.
std::string driveStrings() {
    std::string buffer(64, ' ');
    const std::uint32_t length = platform::logicalDriveStrings(buffer);
    return buffer.substr(0, length);
}

/// Every section is searched for from the beginning of its file. A file that is all sections, as no program
/// writes it, must not keep the window waiting: this many bytes are searched at the most, and one section
/// always.
constexpr std::uint64_t longestSearch = 256ULL * 1024 * 1024;

} // namespace

void cDrive::p_GetDriveLetters_Let(std::string Value) {
    if (!Value.ends_with('\\')) Value += '\\';
    driveLetters_.add(std::move(Value));
}

void cDrive::mp_GetDriveTyps() {
    const std::vector<std::string> roots = rootsToExamine(driveStrings());
    p_Del_DriveTyps();
    p_Del_DriveLetters();
    for (const std::string& root : roots) {
        if (platform::driveType(root) != platform::DriveRemovable) continue;
        const std::string drive = drive::driveName(root);
        if (drive == "A:") continue;
        mp_GetDiskSpace(drive + "\\");
        if (TotalSpace() <= 0) continue;
        p_GetDriveTyps_Let("Wechseldatenträger");
        p_GetDriveLetters_Let(drive);
    }
    mp_EvaluateSticks();
}

void cDrive::mp_EvaluateSticks() {
    usbInfos_ = {};
    if (p_GetDL_Count() == 1) {
        tray_.TrayIcon_Icon(toolkit::iconResource(toolkit::stickIcon));
        const std::string file = p_GetDriveLetters("0") + "USB.ini";
        if (mp_PathExists(file) && platform::profileIsReadable(file)) readProfile(file);
    } else if (p_GetDL_Count() == 0) {
        p_SetUSBInfos(noStick);
        tray_.TrayIcon_Icon(toolkit::iconResource(toolkit::noStickIcon));
    } else {
        p_SetUSBInfos(severalSticks);
        const auto ask = onSeveralSticks; // this object may be gone when it returns
        if (ask) ask();
    }
}

/// All sections gather in one list; of its pairs every second one is copied. This is intended.
void cDrive::readProfile(const std::string& file) {
    basINI::IniReset();
    const std::uint64_t length = platform::fileLength(file).value_or(0);
    std::uint64_t searched = 0;
    for (const std::string& section : basINI::IniGetSectionNames(file)) {
        basINI::IniReadSection(file, section);
        searched += length;
        if (searched > longestSearch) break;
    }
    profileValue_ = basINI::IniGetValue("0");
    for (std::int32_t j = 0; j <= basINI::IniCount() - 1; j += 2) {
        p_SetUSBInfos(basINI::IniGetKey(std::to_string(j)));
        p_SetUSBInfos(basINI::IniGetValue(std::to_string(j)));
    }
}

void cDrive::ChooseUSB_Info(const std::string& sItem) {
    const std::string item = sItem;
    const auto show = [this, &item] {
        p_Del_DriveLetters();
        p_GetDriveLetters_Let(item);
        SetUSB_Info();
    };
    if (p_GetDL_Count() <= 1 && !item.empty()) {
        show();
        return;
    }
    const std::string marker = p_GetUSBInfos(std::to_string(p_USBInfosCount() - 1));
    if (marker == severalSticks) show();
    if (marker == noStick) RemoveUSB_Info();
}

void cDrive::scanAndChoose() {
    mp_GetDriveTyps();
    ChooseUSB_Info(p_GetDriveLetters("0"));
    // While the dialog asked, or a slow stick was waited for, it may have gone: that has been told by then,
    // and nothing would take it from the window any more.
    if (p_GetDL_Count() == 0 || TotalSpace() > 0) return;
    RemoveUSB_Info();
    showTrayIcon(toolkit::noStickIcon);
}

bool cDrive::mp_PathExists(const std::string& path) const {
    const auto attributes = platform::fileAttributes(path);
    return attributes && (*attributes == platform::FileDirectory || *attributes == platform::FileArchive);
}
