// The two choices of the main window that survive its end.

#include "app/frmMain.h"
#include "base/runtime_error.h"
#include "drive/cDrive.h"
#include "drive/device_monitor.h"
#include "platform/basINI.h"
#include "platform/number_text.h"
#include "platform/program_folder.h"
#include "platform/program_path.h"
#include "platform/system_path.h"

#include <cstdio>

namespace {

constexpr std::string_view section = "USB Tool";
constexpr const char* settingsAdvice =
    "Löschen Sie die Datei, oder setzen Sie den Wert auf 0, und starten Sie das Programm neu.";

std::string settingsFile() {
    return platform::withBackslash(platform::settingsFolder()) + "Settings.ini";
}

/// The window's control of that kind and name.
template <typename Kind>
Kind& controlOf(const toolkit::Form& window, const std::string& name) {
    auto* const control = dynamic_cast<Kind*>(window.find(name));
    if (control == nullptr) throw base::RuntimeError(base::ErrorNumber::ControlNotFound, name);
    return *control;
}

} // namespace

void frmMain::LoadSettings() {
    basINI::IniReset();
    const std::string file = settingsFile();
    basINI::IniReadSection(file, section);
    for (std::int32_t i = 0; i < basINI::IniCount(); ++i) {
        const std::string key = basINI::IniGetKey(std::to_string(i));
        const std::string value = basINI::IniGetValue(std::to_string(i));
        try {
            loadSetting(key, value);
        } catch (const base::RuntimeError& error) {
            // Whatever else its handlers came to is no fault of the file's.
            if (error.subject() != key && error.subject() != value) throw;
            std::string entry = file;
            entry.append(", ").append(key).append("=").append(value);
            throw base::RuntimeError(error.number(), entry, settingsAdvice);
        }
    }
    settingsLoaded_ = true;
}

void frmMain::loadSetting(const std::string& key, const std::string& value) {
    if (key.starts_with("chk"))
        controlOf<toolkit::CheckBox>(*this, key).setValue(platform::integer16FromText(value));
    if (key.starts_with("cmb"))
        controlOf<toolkit::ComboBox>(*this, key).setListIndex(platform::integer16FromText(value));
}

void frmMain::SaveSettings() {
    // The session may end while the load asks which of two sticks is meant: the controls show no settings
    // then.
    if (!settingsLoaded_) return;
    const std::string file = settingsFile();
    const bool saved = basINI::IniWriteFile(file, section,
                                            {{chkAuto.name(), std::to_string(chkAuto.value())},
                                             {cmbSize.name(), std::to_string(cmbSize.listIndex())}});
    const std::string failure =
        platform::systemPath(file) + ": Die Einstellungen konnten nicht gespeichert werden.\n";
    if (!saved) std::fputs(failure.c_str(), stderr);
}

void frmMain::chkAuto_Click() {
    automaticDetection_ = chkAuto.value() != toolkit::CheckBox::Unchecked;
}

void frmMain::cmbSize_Click() {
    cDrive& drive = *program_.Drive;
    if (drive.p_GetDriveLetters("0").empty()) {
        drive.scanAndChoose();
    } else {
        drive.GetDriveCapacity();
        if (drive.TotalSpace() <= 0) drive::deviceRemoved(drive);
    }
    SetLabelCap();
}

void frmMain::SetLabelCap() {
    const std::string unit = cmbSize.text();
    for (std::size_t i = 0; i < lblSize.size(); ++i)
        lblSize[i].setCaption(unit);
}
