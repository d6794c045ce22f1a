#include "window/main_window.h"

#include <chrono>
#include <initializer_list>

namespace window {

namespace {

constexpr std::array<const char*, 4> menuCaptions = {"Wiederherstellen", "USB Stick öffnen", "-", "Beenden"};

} // namespace

MainWindow::MainWindow() : Form("frmMain"), Timer1("Timer1", std::chrono::milliseconds(4000), true) {
    addControls();
    assignEnter();
    disableAtFirst();
    for (std::size_t i = 0; i < menuCaptions.size(); ++i)
        mnuPopup[i].setCaption(menuCaptions[i]);
}

/// Nothing can be chosen before the catalog is there, and nothing saved before there is something new.
void MainWindow::disableAtFirst() {
    for (std::size_t i = 0; i < Firm_Option.size(); ++i)
        Firm_Option[i].setEnabled(false);
    for (std::size_t i = 0; i < Sett_Option.size(); ++i)
        Sett_Option[i].setEnabled(false);
    cmdSaveOnStick.setEnabled(false);
}

void MainWindow::addControls() {
    for (Control* control : std::initializer_list<Control*>{
             &Label15,        &Label16,        &Label17,       &Label18,         &Label19,       &Label21,
             &Image1,         &lbl_firmstand,  &lbl_settstand, &lbl_reihenfolge, &lbl_Aenderung, &frm_News,
             &cmdChoose,      &StatusBar1,     &Timer1,        &Frame2,          &lblLW,         &txtDT_Cap,
             &Command1,       &txtFAT,         &cmbSize,       &lblHDSize,       &lblHDFree,     &lblHDUsed,
             &lblHDFreeColor, &lblHDUsedColor, &Picture1,      &cmdSearch,       &cmdOpen,       &txtOpenPath,
             &cmdSaveOnStick, &chkAuto,        &Frame4,        &cmdtest,         &prgUpdate,     &cmdHelp})
        add(*control);
    const auto addArray = [this](auto& array) {
        for (std::size_t i = 0; i < array.size(); ++i)
            add(array[i]);
    };
    addArray(Firm_Option);
    addArray(Sett_Option);
    addArray(lbl_news);
    addArray(lblSize);
    addArray(mnuPopup);
    add(StatusBar1.panel(1));
    add(StatusBar1.panel(2));
}

/// Enter in a text box applies what was typed; elsewhere it starts the update.
void MainWindow::assignEnter() {
    setDefaultButton(cmdChoose);
    txtDT_Cap.setEnterButton(Command1);
    txtOpenPath.setEnterButton(cmdSaveOnStick);
}

void MainWindow::showOnlineState(std::string_view text, std::string_view toolTip) {
    toolkit::StatusPanel& panel = StatusBar1.panel(2);
    panel.setText(text);
    panel.setEnabled(true);
    panel.setToolTip(toolTip);
}

void MainWindow::allowUpdate() {
    cmdChoose.setEnabled(true);
    cmdChoose.setToolTip({});
}

void MainWindow::refuseUpdate(std::string_view reason) {
    cmdChoose.setEnabled(false);
    cmdChoose.setToolTip(reason);
}

void MainWindow::showStickResult(std::string_view text) {
    stickResult_ = text;
    prgUpdate.showText(text);
}

void MainWindow::stickChanged() {
    const bool shown = prgUpdate.state() == toolkit::ProgressState::None && prgUpdate.text() == stickResult_;
    if (shown) prgUpdate.clear();
}

} // namespace window
