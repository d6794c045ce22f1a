#include "app/frmMain.h"

#include "app/handbook.h"
#include "base/lines.h"
#include "drive/cDrive.h"
#include "drive/device_monitor.h"
#include "drive/drive_facts.h"
#include "drive/stick_actions.h"
#include "format/Form1.h"
#include "job/stick_update.h"
#include "online/catalog.h"
#include "online/server_addresses.h"
#include "online/update_check.h"
#include "platform/basDeklare.h"
#include "platform/cRegistry.h"
#include "platform/cTray.h"
#include "toolkit/dispatch.h"
#include "toolkit/message_box.h"
#include "widgets/frmAuswahl.h"
#include "window/reasons.h"
#include "window/title.h"

#include <utility>
#include <vector>

namespace {

const std::array<std::string, 6> settingsCaptions = {
    "Auswahl nicht verfügbar",
    "Österreich - Programmierung",
    "Deutschland - Programmierung",
    "Italy - List",
    "France - List",
    "Spain - List",
};

/// The first ten channels of each kind of channel list, in two columns.
const std::array<std::string, window::settingsKinds> channelOrder = {
    base::joinLines({"1. ORF 1    6. ZDF", "2. ORF 2    7. BR 3", "3. ATV+     8. SAT 1",
                     "4. TW 1     9. PRO 7", "5. ARD     10. ..."}),
    base::joinLines({"1. ARD      6. SAT 1", "2. ZDF      7. PRO 7", "3. 3 Sat    8. Kabel 1",
                     "4. RTL      9. VOX", "5. RTL 2   10. ..."}),
    base::joinLines({"1. RAI 1    6. Italia1", "2. RAI 2    7. LA 7", "3. RAI 3    8. TSI 1",
                     "4. Rete 4   9. TSI 2", "5. Canale5 10. ..."}),
    base::joinLines({"1. FR1      6. ...", "2. FR2      7. ...", "3. FR3      8. ...", "4. ...      9. ...",
                     "5. ...     10. ..."}),
    base::joinLines({"1. TVE1     6. ...", "2. TVE2     7. ...", "3. TVE3     8. ...", "4. ...      9. ...",
                     "5. ...     10. ..."}),
};

} // namespace

frmMain::frmMain(app::Program& program) : program_(program) {
    connectEvents();
}

frmMain::~frmMain() = default;

void frmMain::connectEvents() {
    onLoad = [this] { Form_Load(); };
    onQueryUnload = [this] { Form_QueryUnload(); };
    onUnload = [] { toolkit::endAfterClosing(); };
    Timer1.onTimer = [this] { Timer1_Timer(); };
    cmbSize.onClick = [this] { cmbSize_Click(); };
    chkAuto.onClick = [this] { chkAuto_Click(); };
    Firm_Option.onClick = [this](std::int16_t index) { online::Firm_Option_Click(*this, index); };
    Sett_Option.onClick = [this](std::int16_t index) { online::Sett_Option_Click(*this, index); };
    cmdChoose.onClick = [this] { job::cmdChoose_Click(*program_.Drive); };
    Command1.onClick = [this] { drive::Command1_Click(*program_.Drive); };
    cmdOpen.onClick = [this] { drive::cmdOpen_Click(*program_.Drive); };
    cmdSearch.onClick = [this] { cmdSearch_Click(); };
    cmdSaveOnStick.onClick = [this] { cmdSaveOnStick_Click(); };
    cmdtest.onClick = [this] { cmdtest_Click(); };
    cmdHelp.onClick = [this] { app::openHandbook(caption()); };
    onHelp = cmdHelp.onClick;
    txtOpenPath.onKeyPress = [this](char32_t) {
        cmdSaveOnStick.setEnabled(true);
        UnsavedChanges = true;
    };
    for (std::size_t i = 0; i < mnuPopup.size(); ++i)
        mnuPopup[i].onClick = [this, i] { mnuPopup_Click(static_cast<std::int16_t>(i)); };
}

void frmMain::Form_Load() {
    online::loadServerAddresses(); // before anything else: it may be the end
    program_.MainWindow = this;
    program_.Tray = std::make_unique<cTray>();
    program_.Drive = std::make_unique<cDrive>(*this, *program_.Tray);
    program_.Drive->onSeveralSticks = [this] { chooseAmongSticks(); };
    program_.Registry = std::make_unique<cRegistry>();
    SettingsCaptions = settingsCaptions;
    ChannelOrder = channelOrder;
    SelectedFirmware = -1;
    SelectedSettings = -1;
    setCaption(std::string(window::programTitle).append(window::programVersion));
    cmbSize.addItem("MB", 2);
    cmbSize.addItem("GB", 3);
    cmbSize.setListIndex(0);
    LoadSettings();
    setIcon(toolkit::iconResource(toolkit::programIcon));
    basDeklare::setDeviceListener({[this] { return automaticDetection_; },
                                   [this] { drive::deviceArrived(*program_.Drive, program_.OpenOnArrival); },
                                   [this] { drive::deviceRemoved(*program_.Drive); }});
    basDeklare::HookWindow(handle());
    showOnlineState("Suche nach Updates...", "Updates werden gesucht.");
    cmdChoose.setCaption("Suche Updates...");
    refuseUpdate(window::searchGoesOn);
}

void frmMain::Form_QueryUnload() {
    if (UnsavedChanges) {
        const std::string text =
            base::joinLines({"Sie haben Informationen abgeändert.", "Wollen Sie speichern?"});
        if (toolkit::messageBox(text, toolkit::YesNoInformation, caption()) == toolkit::Yes)
            drive::SavePath(*program_.Drive);
    }
    SaveSettings();
    basDeklare::UnhookWindow(handle());
    Unload_Prog();
}

void frmMain::Unload_Prog() {
    program_.Registry.reset();
    program_.Tray.reset();
    program_.Drive.reset();
    program_.MainWindow = nullptr;
}

void frmMain::Timer1_Timer() {
    online::CheckForUpdates(*this);
    Timer1.setEnabled(false);
}

void frmMain::cmdtest_Click() {
    if (assistant_ == nullptr) assistant_ = std::make_unique<Form1>(*this);
    assistant_->onHelp = onHelp;
    assistant_->show(this);
}

void frmMain::cmdSearch_Click() {
    program_.Drive->scanAndChoose();
}

void frmMain::chooseAmongSticks() {
    cDrive& drive = *program_.Drive;
    std::vector<frmAuswahl::Candidate> candidates;
    for (std::int32_t i = 0; i < drive.p_GetDL_Count(); ++i) {
        const std::string root = drive.p_GetDriveLetters(std::to_string(i));
        std::string label = drive.mp_GetDriveName(root);
        candidates.push_back({root, std::move(label), drive::factsOf(drive, root)});
    }
    frmAuswahl dialog(std::move(candidates));
    dialog.onHelp = onHelp;
    dialog.onChosen = [&drive](const std::string& root) { drive.ChooseUSB_Info(root); };
    dialog.showModal(*this);
}

void frmMain::cmdSaveOnStick_Click() {
    if (!drive::SavePath(*program_.Drive)) return; // the change stays marked, so that closing asks
    UnsavedChanges = false;
    cmdSaveOnStick.setEnabled(false);
}

/// "Beenden" does nothing, and no menu opens: this is intended.
void frmMain::mnuPopup_Click(std::int16_t Index) {
    constexpr std::int16_t restoreItem = 0;
    constexpr std::int16_t openItem = 1;
    cDrive& drive = *program_.Drive;
    if (Index == restoreItem) {
        setVisible(true);
        restore();
    }
    // The types are counted: they tell how many sticks the scan found, also after one of several has been
    // chosen.
    if (Index == openItem && drive.p_GetDT_Count() == 1) drive::OpenDir(drive, drive.p_GetDriveLetters("0"));
}
