#include "job/stick_update.h"

#include "app/frmMain.h"
#include "app/number_text.h"
#include "app/program_path.h"
#include "drive/cDrive.h"
#include "online/download.h"
#include "online/server_addresses.h"
#include "platform/files.h"
#include "platform/shell.h"
#include "platform/shell_open.h"
#include "platform/volumes.h"
#include "toolkit/message_box.h"
#include "toolkit/pump.h"
#include "toolkit/runtime_error.h"

namespace job {

namespace {

using toolkit::ErrorNumber;
using toolkit::RuntimeError;

constexpr std::int16_t noSettings = -1;

void refreshCapacity(frmMain& window) {
    window.program().Drive->GetDriveCapacity();
    toolkit::DoEvents();
}

/// The figure is compared in the unit it is shown in, so in "GB" the job demands 5 GB: this is intended.
bool enoughSpace(frmMain& window) {
    constexpr double required = 5;
    const std::string& free = window.lblHDFree.caption();
    if (free.empty()) throw RuntimeError(ErrorNumber::DiskNotReady, window.lblLW.caption());
    if (app::numberFromText(free) >= required) return true;
    toolkit::messageBox(app::joinLines({"Sie benötigen mindestens 5 MB freien Speicherplatz am USB-Stick!",
                                        "Löschen Sie unbenötigte Daten und versuchen Sie es nochmal."}),
                        toolkit::Critical, "Zuwenig Speicher verfügbar !");
    return false;
}

bool confirmed(frmMain& window) {
    const std::string& receiver = online::element(window.Receivers.ReceiverName, window.SelectedFirmware);
    const auto caption = static_cast<std::int16_t>(window.SelectedSettings + 1);
    const std::string text = app::joinLines({
        "Sie haben folgende Update Optionen gewählt:",
        "Receiver: Orvanta " + receiver,
        "Settings: " + online::element(window.SettingsCaptions, caption),
        "",
        "Updaten mit OK ?",
    });
    return toolkit::messageBox(text, toolkit::OkCancel, "Wollen Sie updaten ?") == toolkit::Ok;
}

bool connected(frmMain& window) {
    if (!online::OpenURL(window, online::downloadUrl() + "usb-list.csv", "0").empty()) return true;
    toolkit::messageBox(
        app::joinLines({"Es konnte keine Verbindung hergestellt werden!",
                        "Prüfen Sie Ihre Internetverbindung oder versuchen es später nochmal."}),
        toolkit::Critical, "Verbindungs-Fehler");
    return false;
}

/// The file is called ".txt" on the server and not on the stick, and an empty download is written, too: both
/// are intended.
void transfer(frmMain& window, const std::string& root, const std::string& file, const char* downtype) {
    const std::string contents = online::OpenURL(window, online::downloadUrl() + file + ".txt", downtype);
    online::WriteFile(root + file, contents);
}

void copyToStick(const std::string& root, const std::string& file) {
    const std::string source = app::programPath() + file;
    const std::string target = root + file;
    const platform::FileResult result = platform::copyFile(source, target);
    if (result != platform::FileResult::Ok)
        throw RuntimeError(static_cast<ErrorNumber>(result), online::FileExists(source) ? target : source);
}

/// From here on the stick may be pulled.
void settle(const std::string& root) {
    if (!platform::settleVolume(root)) throw RuntimeError(ErrorNumber::DeviceIo, root);
}

void showSuccess() {
    toolkit::messageBox(app::joinLines({
                            "Update abgeschlossen",
                            "",
                            "Dieser Service wird KOSTENLOS zur Verfügung gestellt von",
                            "BRELLIX AUSTRIA - " + online::serverAddresses().WebHost,
                            "",
                            "",
                        }),
                        toolkit::OkOnly, "Update erfolgreich");
    platform::ShellOpenFile("open", online::sponsorPageUrl(), "", "", platform::showNormal, false);
}

} // namespace

void cmdChoose_Click(frmMain& window) {
    refreshCapacity(window);
    if (!enoughSpace(window)) return;

    // What is written is what the user confirms, whatever is clicked or plugged in while it is fetched.
    const std::string root = window.lblLW.caption();
    const std::int16_t receiver = window.SelectedFirmware;
    const std::int16_t settings = window.SelectedSettings;
    if (!confirmed(window) || !connected(window)) return;

    const online::Catalog& catalog = window.Receivers;
    transfer(window, root, std::string(online::element(catalog.FirmwareFile, receiver)), "1");
    if (settings != noSettings)
        transfer(window, root, std::string(online::element(catalog.SettingsFile, receiver, settings)), "2");
    window.showOnlineState("Update abgeschlossen", "Update abgeschlossen.");
    refreshCapacity(window);
    copyToStick(root, "autorun.inf");
    copyToStick(root, "orvantastick.ico");
    settle(root);
    showSuccess();
}

} // namespace job
