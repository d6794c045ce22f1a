#pragma once

#include "app/program.h"
#include "window/main_window.h"

#include <cstdint>
#include <memory>

class Form1;

/// The main window with the handlers of its events: this is where everything meets. What a handler does
/// beyond a line or two stands in the folder of its subject (online, drive, job, format).
class frmMain : public window::MainWindow {
public:
    explicit frmMain(app::Program& program);
    ~frmMain() override;

    void Form_Load();
    void Form_QueryUnload();
    void Unload_Prog();
    void Timer1_Timer();
    void cmdtest_Click();
    void cmdSearch_Click();
    void cmdSaveOnStick_Click();
    void mnuPopup_Click(std::int16_t Index);

    // The choices that survive the program's end: in settings.cpp.

    void cmbSize_Click();
    void chkAuto_Click();
    /// Reads the settings file into the controls. A missing file or section changes nothing. Throws
    /// base::RuntimeError for a value that is no number or a key that names no control.
    void LoadSettings();
    /// Writes the controls into a settings file that holds nothing else, unless they have not been loaded
    /// yet. When it fails the old file stays, and it is told on the standard error output.
    void SaveSettings();
    /// Shows the chosen unit behind the three capacities.
    void SetLabelCap();

private:
    void loadSetting(const std::string& key, const std::string& value);
    void connectEvents();
    /// Several sticks were found: asks which one is meant.
    void chooseAmongSticks();

    app::Program& program_;
    std::unique_ptr<Form1> assistant_;
    bool settingsLoaded_ = false;     ///< the controls show what the settings file says
    bool automaticDetection_ = false; ///< device messages count only while it is set
};
