#pragma once

#include "base/keyed_list.h"
#include "platform/volumes.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace window {
class MainWindow;
}
class cTray;

/// The removable drives, the choice of the stick among them, its facts, and the parts of the main window that
/// show it. What stands where is told below: a member without a word about it is in cDrive.cpp.
class cDrive {
public:
    /// Both must outlive it.
    cDrive(window::MainWindow& window, cTray& tray) : window_(window), tray_(tray) {}
    cDrive(const cDrive&) = delete;
    cDrive& operator=(const cDrive&) = delete;

    // The drive types: "Wechseldatenträger" for each drive that the scan found.
    std::string p_GetDriveTyps(std::string_view Key) const { return driveTypes_.get(Key); }
    void p_GetDriveTyps_Let(std::string Value) { driveTypes_.add(std::move(Value)); }
    std::int32_t p_GetDT_Count() const { return static_cast<std::int32_t>(driveTypes_.count()); }
    void p_Del_DriveTyps() { driveTypes_ = {}; }

    // The drive roots (`E:\`), in the order of the types; entry "0" is the current stick once it has been
    // chosen.
    std::string p_GetDriveLetters(std::string_view Key) const { return driveLetters_.get(Key); }
    /// Appends "\" when the text does not end in one.
    void p_GetDriveLetters_Let(std::string Value);
    std::int32_t p_GetDL_Count() const { return static_cast<std::int32_t>(driveLetters_.count()); }
    void p_Del_DriveLetters() { driveLetters_ = {}; }

    // What the evaluation found: keys and values of the stick's profile file, or a marker as the last entry.
    std::string p_GetUSBInfos(std::string_view Key) const { return usbInfos_.get(Key); }
    void p_SetUSBInfos(std::string Value) { usbInfos_.add(std::move(Value)); }
    std::int32_t p_USBInfosCount() const { return static_cast<std::int32_t>(usbInfos_.count()); }

    /// The folder on the stick that the user keeps in its profile file, relative to the root, without a
    /// leading "\".
    const std::string& mp_StandardPfad() const noexcept { return standardPath_; }
    void mp_StandardPfad(std::string Value) { standardPath_ = std::move(Value); }

    /// A scan has found several sticks, the drive letters: somebody should choose one (ChooseUSB_Info). Where
    /// nobody does, whoever asked for the scan takes the first.
    std::function<void()> onSeveralSticks;

    /// The window that shows the stick.
    window::MainWindow& mainWindow() const noexcept { return window_; }

    /// Finds the removable drives that hold a medium, then evaluates them. The last drive root is never
    /// examined, and with 16 or more roots nothing is found.
    void mp_GetDriveTyps();
    /// Decides from the lists and `sItem` (a root, or empty) what the window shows: a stick, no stick, or
    /// what it did.
    void ChooseUSB_Info(const std::string& sItem = {});
    /// The two in a row: scans and shows what was found, the first stick where nobody chose another.
    void scanAndChoose();
    /// What the stick is that is shown; empty when none is. Nothing else may be written to.
    const platform::DriveIdentity& shownStick() const noexcept { return shownStick_; }
    /// True for an existing folder, and for an existing file whose only attribute is the archive bit. Never
    /// fails.
    bool mp_PathExists(const std::string& path) const;

    // What the main window and the tray icon show of the stick: in stick_display.cpp.

    /// Shows the stick whose root is entry "0" of the drive letters, and notes what it is.
    void SetUSB_Info();
    /// Shows that there is no stick; the drive letter stays in view.
    void RemoveUSB_Info();
    /// Gives the tray icon that icon resource (toolkit/picture.h) and the main window's title as its tip.
    void showTrayIcon(int icon);

    // Facts of a drive: in drive_facts.cpp.

    /// Measures a drive (`E:\`): both sizes become 0 when it has no medium.
    void mp_GetDiskSpace(const std::string& sDrive);
    /// Bytes.
    double TotalSpace() const noexcept { return totalSpace_; }
    /// Bytes, also those that the user may not use.
    double TotalFreeSpace() const noexcept { return totalFreeSpace_; }
    /// The volume label; stores the name of the file system, too.
    std::string mp_GetDriveName(const std::string& Drive);
    const std::string& mp_FileSystem() const noexcept { return fileSystem_; }
    /// Gives the stick that is shown a label; without one nothing happens. False when it did not take the
    /// label, or another one is in its place.
    bool mp_SetDriveName(const std::string& Drive, const std::string& Name);

    /// A little-endian number of 64 bits.
    static double mp_BytesToDouble(const platform::DiskFreeSpace::Bytes& bytes);

    // How full the stick is: in capacity.cpp.

    /// Shows how large, how full and how free the stick is, in the chosen unit. A stick that has no size,
    /// because it is gone, has no capacities to show: they are emptied.
    void GetDriveCapacity();

private:
    void mp_EvaluateSticks();
    void readProfile(const std::string& file);
    void showStandardPath(const std::string& root);            // in stick_display.cpp
    void noteShownStick(const platform::DriveIdentity& stick); // in stick_display.cpp
    void clearCapacity();                                      // in capacity.cpp

    window::MainWindow& window_;
    cTray& tray_;
    base::KeyedList driveTypes_;
    base::KeyedList driveLetters_;
    base::KeyedList usbInfos_;
    platform::DriveIdentity shownStick_;
    std::string standardPath_;
    std::string profileValue_; ///< first value of the last profile file that an evaluation read
    std::string fileSystem_;
    double totalSpace_ = 0;
    double totalFreeSpace_ = 0;
};
