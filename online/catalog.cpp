#include "online/catalog.h"

#include "base/runtime_error.h"
#include "base/text.h"
#include "platform/program_path.h"
#include "toolkit/picture.h"

namespace online {

using window::element;
using window::MainWindow;
using window::settingsKinds;

namespace {

constexpr int none = -1;

[[noreturn]] void outOfRange(std::string subject = {}) {
    throw base::RuntimeError(base::ErrorNumber::SubscriptOutOfRange, std::move(subject));
}

/// The piece with that index of a text cut at every separator.
std::string_view pieceOf(std::string_view text, std::string_view separator, std::size_t index,
                         const char* what) {
    for (; index > 0; --index) {
        const std::size_t end = text.find(separator);
        if (end == std::string_view::npos) outOfRange(what);
        text.remove_prefix(end + separator.size());
    }
    return text.substr(0, text.find(separator));
}

void storeRow(window::Catalog& catalog, int row, std::string_view line) {
    const auto at = static_cast<std::size_t>(row);
    catalog.ReceiverName[at] = fieldOf(line, 0);
    catalog.ReceiverPicture[at] = fieldOf(line, 1);
    catalog.FirmwareFile[at] = fieldOf(line, 2);
    catalog.FirmwareDate[at] = fieldOf(line, 3);
    catalog.FirmwareNote[at] = fieldOf(line, 4);
    std::size_t field = 5;
    for (int kind = 0; kind < settingsKinds; ++kind) {
        catalog.SettingsFile[window::tableIndex(row, kind)] = fieldOf(line, field++);
        catalog.SettingsDate[window::tableIndex(row, kind)] = fieldOf(line, field++);
    }
}

void showReceiver(MainWindow& window, int receiver) {
    const window::Catalog& catalog = window.Receivers;
    const std::string& picture = element(catalog.ReceiverPicture, receiver);
    window.Image1.setPicture(toolkit::loadPicture(platform::programPath() + picture));
    window.lbl_firmstand.setCaption("Stand: " + element(catalog.FirmwareDate, receiver));
    window.lbl_Aenderung.setCaption(element(catalog.FirmwareNote, receiver));
}

void preselectSettings(MainWindow& window, int receiver) {
    for (int kind = 0; kind < settingsKinds; ++kind) {
        toolkit::OptionButton& option = window.Sett_Option[static_cast<std::size_t>(kind)];
        const bool available = !element(window.Receivers.SettingsFile, receiver, kind).empty();
        option.setEnabled(available);
        if (!available || window.SelectedSettings != none) continue;
        window.SelectedSettings = kind;
        option.setValue(true);
        window.lbl_settstand.setCaption("Stand: " + element(window.Receivers.SettingsDate, receiver, kind));
        window.lbl_reihenfolge.setCaption(element(window.ChannelOrder, kind));
    }
}

void offerReceiver(MainWindow& window, int row) {
    toolkit::OptionButton& option = window.Firm_Option[static_cast<std::size_t>(row)];
    option.setEnabled(true);
    if (window.SelectedFirmware != none) return;
    window.SelectedFirmware = row;
    option.setValue(true);
    showReceiver(window, window.SelectedFirmware);
    preselectSettings(window, window.SelectedFirmware);
}

/// The channel order of the kind that is lost stays in view: this is intended.
void dropSettings(MainWindow& window, int kind) {
    window.SelectedSettings = none;
    window.Sett_Option[static_cast<std::size_t>(kind)].setValue(false);
    window.lbl_settstand.setCaption("Stand: Nicht verfügbar");
    window.lbl_reihenfolge.setCaption(element(window.ChannelOrder, kind));
}

} // namespace

std::string_view GetLine(std::string_view text, std::size_t index) {
    return pieceOf(text, "\r\n", index, "Zeile der Serverdatei");
}

std::string fieldOf(std::string_view line, std::size_t index) {
    return base::fromAnsi(pieceOf(line, ";", index, "Feld der Serverdatei"));
}

void LoadCatalog(MainWindow& window, std::string_view text) {
    for (int row = 0; row < window::receiverCount; ++row) {
        storeRow(window.Receivers, row, GetLine(text, static_cast<std::size_t>(row)));
        if (!element(window.Receivers.FirmwareFile, row).empty()) offerReceiver(window, row);
    }
}

void Firm_Option_Click(MainWindow& window, std::int16_t Index) {
    window.SelectedFirmware = Index;
    showReceiver(window, Index);
    for (int kind = 0; kind < settingsKinds; ++kind) {
        const bool available = !element(window.Receivers.SettingsFile, Index, kind).empty();
        window.Sett_Option[static_cast<std::size_t>(kind)].setEnabled(available);
        if (!available && window.SelectedSettings == kind) dropSettings(window, kind);
    }
}

void Sett_Option_Click(MainWindow& window, std::int16_t Index) {
    window.SelectedSettings = Index;
    window.lbl_settstand.setCaption("Stand: " +
                                    element(window.Receivers.SettingsDate, window.SelectedFirmware, Index));
    window.lbl_reihenfolge.setCaption(element(window.ChannelOrder, Index));
}

} // namespace online
