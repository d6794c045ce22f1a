#pragma once

#include "toolkit/button.h"
#include "toolkit/check_box.h"
#include "toolkit/combo_box.h"
#include "toolkit/control_array.h"
#include "toolkit/form.h"
#include "toolkit/frame.h"
#include "toolkit/image.h"
#include "toolkit/label.h"
#include "toolkit/menu_item.h"
#include "toolkit/option_button.h"
#include "toolkit/picture_box.h"
#include "toolkit/progress_bar.h"
#include "toolkit/status_bar.h"
#include "toolkit/text_box.h"
#include "toolkit/timer.h"
#include "window/receivers.h"

#include <array>
#include <string>
#include <string_view>

namespace window {

/// The main window as everybody below its handlers sees it: its controls, and what is chosen. It has no
/// handler of its own; those are frmMain's (app/frmMain.h).
class MainWindow : public toolkit::Form {
public:
    MainWindow();

    // The instructions.
    toolkit::Label Label15{"Label15"};
    toolkit::Label Label16{"Label16"};
    toolkit::Label Label17{"Label17"};
    toolkit::Label Label18{"Label18"};
    toolkit::Label Label19{"Label19"};
    toolkit::Label Label21{"Label21"};

    // The receiver and its channel list.
    toolkit::OptionArray<receiverCount> Firm_Option{"Firm_Option"};
    toolkit::OptionArray<settingsKinds> Sett_Option{"Sett_Option"};
    toolkit::Image Image1{"Image1"};
    toolkit::Label lbl_firmstand{"lbl_firmstand"};
    toolkit::Label lbl_settstand{"lbl_settstand"};
    toolkit::Label lbl_reihenfolge{"lbl_reihenfolge"};
    toolkit::Label lbl_Aenderung{"lbl_Aenderung"};

    // News, the main button, the state of affairs.
    toolkit::Frame frm_News{"frm_News"};
    toolkit::ControlArray<toolkit::Label, 4> lbl_news{"lbl_news"};
    toolkit::Button cmdChoose{"cmdChoose"};
    toolkit::StatusBar StatusBar1{"StatusBar1"};
    toolkit::ProgressBar prgUpdate{"prgUpdate"}; ///< right of panel 2
    toolkit::Button cmdHelp{"cmdHelp"};          ///< right of that
    toolkit::Timer Timer1;

    // The stick.
    toolkit::Frame Frame2{"Frame2"};
    toolkit::Label lblLW{"lblLW"};
    toolkit::TextBox txtDT_Cap{"txtDT_Cap"};
    toolkit::Button Command1{"Command1"};
    toolkit::TextBox txtFAT{"txtFAT"};
    toolkit::ComboBox cmbSize{"cmbSize"};
    toolkit::Label lblHDSize{"lblHDSize"};
    toolkit::Label lblHDFree{"lblHDFree"};
    toolkit::Label lblHDUsed{"lblHDUsed"};
    toolkit::Label lblHDFreeColor{"lblHDFreeColor"};
    toolkit::Label lblHDUsedColor{"lblHDUsedColor"};
    toolkit::ControlArray<toolkit::Label, 3> lblSize{"lblSize"};
    toolkit::PictureBox Picture1{"Picture1"};
    toolkit::Button cmdSearch{"cmdSearch"};
    toolkit::Button cmdOpen{"cmdOpen"};

    // Further settings, and the assistant for hard disks.
    toolkit::TextBox txtOpenPath{"txtOpenPath"};
    toolkit::Button cmdSaveOnStick{"cmdSaveOnStick"};
    toolkit::CheckBox chkAuto{"chkAuto"};
    toolkit::Frame Frame4{"Frame4"};
    toolkit::Button cmdtest{"cmdtest"};

    // The menu that belongs to the tray icon; nothing opens it.
    toolkit::ControlArray<toolkit::MenuItem, 4> mnuPopup{"mnuPopup"};

    // State.
    int SelectedFirmware = -1;                   ///< 0..8, -1 for none
    int SelectedSettings = -1;                   ///< 0..4, -1 for none
    bool UnsavedChanges = false;                 ///< the standard path was edited and not saved
    std::array<std::string, 6> SettingsCaptions; ///< by SelectedSettings + 1
    std::array<std::string, settingsKinds> ChannelOrder;
    Catalog Receivers;

    /// Puts a text and a tool tip into panel 2 of the status bar and enables it.
    void showOnlineState(std::string_view text, std::string_view toolTip);

    /// The main button can be pressed.
    void allowUpdate();
    /// It cannot, and its tool tip says why.
    void refuseUpdate(std::string_view reason);

    /// What a job came to, in the progress bar's place, until another stick is shown or none.
    void showStickResult(std::string_view text);
    /// Another stick is shown, or none.
    void stickChanged();

private:
    void addControls();
    void assignEnter();
    void disableAtFirst();

    std::string stickResult_; ///< empty for none
};

} // namespace window
