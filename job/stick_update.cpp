#include "job/stick_update.h"

#include "base/lines.h"
#include "base/runtime_error.h"
#include "drive/cDrive.h"
#include "drive/device_monitor.h"
#include "job/shown_progress.h"
#include "job/written_files.h"
#include "online/download.h"
#include "online/file_name.h"
#include "online/server_addresses.h"
#include "platform/file_check.h"
#include "platform/files.h"
#include "platform/notification.h"
#include "platform/number_text.h"
#include "platform/program_path.h"
#include "platform/shell.h"
#include "platform/shell_open.h"
#include "platform/volumes.h"
#include "toolkit/message_box.h"
#include "toolkit/pump.h"
#include "window/main_window.h"
#include "window/receivers.h"

#include <cstdint>
#include <optional>
#include <utility>

namespace job {

namespace {

using base::ErrorNumber;
using base::RuntimeError;

constexpr int noSettings = -1;

/// Names of the files to fetch.
struct Files {
    std::string firmware;
    std::optional<std::string> settings;
};

Files chosenFiles(const window::MainWindow& window) {
    const window::Catalog& catalog = window.Receivers;
    Files files;
    files.firmware = window::element(catalog.FirmwareFile, window.SelectedFirmware);
    if (window.SelectedSettings != noSettings)
        files.settings =
            window::element(catalog.SettingsFile, window.SelectedFirmware, window.SelectedSettings);
    return files;
}

/// The names are the server's, and not every name may be written.
void checkNames(const Files& files) {
    for (const std::string& name : {files.firmware, files.settings.value_or(files.firmware)})
        if (!online::isFileNameForStick(name)) throw RuntimeError(ErrorNumber::PathFileAccess, name);
}

void refreshCapacity(cDrive& drive) {
    drive.GetDriveCapacity();
    toolkit::DoEvents();
}

online::Display displayOf(window::MainWindow& window) {
    return {window.StatusBar1.panel(2), window.prgUpdate};
}

/// What is written to, and how it is known again.
struct Stick {
    std::string root;
    platform::DriveIdentity identity;
};

/// Throws when another one is in its place, or none.
void checkPlace(const Stick& stick) {
    if (!stick.identity || platform::driveIdentity(stick.root) != stick.identity)
        throw RuntimeError(ErrorNumber::DiskNotReady, stick.root);
}

/// The stick that the window shows.
Stick shownStick(const cDrive& drive) {
    Stick stick{drive.mainWindow().lblLW.caption(), drive.shownStick()};
    checkPlace(stick);
    return stick;
}

/// The figure is compared in the unit it is shown in, so in "GB" the job demands 5 GB: this is intended.
bool enoughSpace(const window::MainWindow& window) {
    constexpr double required = 5;
    if (platform::numberFromText(window.lblHDFree.caption()) >= required) return true;
    toolkit::messageBox(base::joinLines({"Sie benötigen mindestens 5 MB freien Speicherplatz am USB-Stick!",
                                         "Löschen Sie unbenötigte Daten und versuchen Sie es nochmal."}),
                        toolkit::Critical, "Zuwenig Speicher verfügbar !");
    return false;
}

bool confirmed(const window::MainWindow& window) {
    const std::string& receiver = window::element(window.Receivers.ReceiverName, window.SelectedFirmware);
    const std::string text = base::joinLines({
        "Sie haben folgende Update Optionen gewählt:",
        "Receiver: Orvanta " + receiver,
        "Settings: " + window::element(window.SettingsCaptions, window.SelectedSettings + 1),
        "",
        "Updaten mit OK ?",
    });
    return toolkit::messageBox(text, toolkit::OkCancel, "Wollen Sie updaten ?") == toolkit::Ok;
}

/// Who works with something else need not look again and again whether the job is done.
void tellWhoIsAway(const window::MainWindow& window, std::string_view title, std::string_view text) {
    if (!window.isProgramActive()) platform::showNotification(window.handle(), title, text);
}

constexpr const char* failed = "Update fehlgeschlagen";

bool connected(window::MainWindow& window) {
    if (!online::OpenURL(displayOf(window), online::downloadUrl() + "usb-list.csv", "0").empty()) return true;
    window.prgUpdate.clear(); // the box is shown while the job is still there
    tellWhoIsAway(window, failed, "Es konnte keine Verbindung hergestellt werden!");
    toolkit::messageBox(
        base::joinLines({"Es konnte keine Verbindung hergestellt werden!",
                         "Prüfen Sie Ihre Internetverbindung oder versuchen es später nochmal."}),
        toolkit::Critical, "Verbindungs-Fehler");
    return false;
}

/// How many bytes a file on the stick may have. One that is there already makes room for the new one. What
/// cannot be measured, or is not the stick any more, has an error of its own when it is written to.
std::uint64_t roomFor(cDrive& drive, const Stick& stick, const std::string& file) {
    constexpr std::uint64_t largestFile = 0xFFFFFFFF; // of FAT32
    drive.mp_GetDiskSpace(stick.root);
    if (drive.TotalSpace() <= 0 || platform::driveIdentity(stick.root) != stick.identity) return largestFile;
    const auto replaced = static_cast<double>(platform::fileLength(stick.root + file).value_or(0));
    const double room = drive.TotalFreeSpace() + replaced;
    return room < static_cast<double>(largestFile) ? static_cast<std::uint64_t>(room) : largestFile;
}

/// What is fetched, for OpenURL and for the user.
struct Kind {
    const char* downtype;
    const char* name;
};

constexpr Kind firmware = {"1", "Firmware"};
constexpr Kind settings = {"2", "Settings"};

/// The file is called ".txt" on the server and not on the stick, and an empty download is written, too: both
/// are intended.
void transfer(cDrive& drive, const Stick& stick, const std::string& file, const Kind& kind,
              ShownProgress& progress, WrittenFiles& written) {
    const online::Destination destination{stick.root + file, roomFor(drive, stick, file)};
    online::Received received = online::OpenFile(
        displayOf(drive.mainWindow()), online::downloadUrl() + file + ".txt", kind.downtype, destination);
    progress.received(kind.name, received);
    progress.writing();
    checkPlace(stick);
    const bool wrote = online::WriteFile(stick.root + file, received.contents, stick.identity);
    written.add(stick.root + file, std::move(received.contents), wrote);
}

void copyToStick(const Stick& stick, const std::string& file, WrittenFiles& written) {
    const std::string source = platform::programPath() + file;
    const std::string target = stick.root + file;
    checkPlace(stick);
    bool untouched = false;
    const platform::FileResult result = platform::copyFile(source, target, stick.identity, &untouched);
    if (result != platform::FileResult::Ok)
        throw RuntimeError(platform::errorNumber(result), online::FileExists(source) ? target : source);
    written.add(target, online::ReadFile(source), !untouched);
}

/// From here on the stick may be pulled.
void settle(const Stick& stick) {
    checkPlace(stick);
    if (!platform::settleVolume(stick.root)) throw RuntimeError(ErrorNumber::DeviceIo, stick.root);
}

void showSuccess() {
    toolkit::messageBox(base::joinLines({
                            "Update abgeschlossen",
                            "",
                            "Dieser Service wird KOSTENLOS zur Verfügung gestellt von",
                            "BRELLIX AUSTRIA - " + online::serverAddresses().WebHost,
                            "",
                            "",
                        }),
                        toolkit::OkOnly, "Update erfolgreich");
}

void openSponsorPage() {
    platform::ShellOpenFile("open", online::sponsorPageUrl(), "", "", platform::showNormal, false);
}

void fetchAndWrite(cDrive& drive, const Files& files, const Stick& stick) {
    window::MainWindow& window = drive.mainWindow();
    ShownProgress progress(window);
    WrittenFiles written;
    if (!connected(window)) return;

    transfer(drive, stick, files.firmware, firmware, progress, written);
    if (files.settings) transfer(drive, stick, *files.settings, settings, progress, written);
    window.showOnlineState("Update abgeschlossen", "Update abgeschlossen.");
    refreshCapacity(drive);
    copyToStick(stick, "autorun.inf", written);
    copyToStick(stick, "orvantastick.ico", written);
    progress.verifying();
    written.verify(stick.identity);
    settle(stick);
    progress.finish(written.count());
    tellWhoIsAway(window, "Update abgeschlossen", progress.result());
    showSuccess();
    progress.alert();
    openSponsorPage();
}

} // namespace

void cmdChoose_Click(cDrive& drive) {
    window::MainWindow& window = drive.mainWindow();
    refreshCapacity(drive);
    if (window.lblHDFree.caption().empty()) { // pulled, and nobody told
        drive::deviceRemoved(drive);
        return;
    }
    if (!enoughSpace(window)) return;

    // What is written is what the user confirms, whatever is clicked or plugged in while it is fetched; and
    // where to, is the stick that the window shows at that moment.
    const Files files = chosenFiles(window);
    if (!confirmed(window)) return;
    const Stick stick = shownStick(drive);
    checkNames(files);
    try {
        fetchAndWrite(drive, files, stick);
    } catch (const RuntimeError& error) {
        tellWhoIsAway(window, failed, base::description(error.number()));
        throw;
    }
}

} // namespace job
