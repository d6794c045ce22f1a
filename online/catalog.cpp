#include "online/catalog.h"

#include "base/runtime_error.h"
#include "base/text.h"
#include "platform/program_path.h"
#include "toolkit/picture.h"

#include <optional>

namespace online {

using window::element;
using window::MainWindow;
using window::settingsKinds;

namespace {

constexpr int none = -1;

/// Nobody but who keeps the server can mend it.
[[noreturn]] void refuse(std::string_view where, const char* what, std::size_t index) {
    throw base::RuntimeError(base::ErrorNumber::SubscriptOutOfRange,
                             std::string(where) + ", " + what + ' ' + std::to_string(index + 1) + " fehlt",
                             "Die Datei auf dem Update-Server ist fehlerhaft. Versuchen Sie es später noch "
                             "einmal. Bleibt der Fehler, muss der Händler Ihres Receivers sie berichtigen.");
}

/// The piece with that index of a text cut at every separator; no value when there is none.
std::optional<std::string_view> pieceOf(std::string_view text, std::string_view separator,
                                        std::size_t index) {
    for (; index > 0; --index) {
        const std::size_t end = text.find(separator);
        if (end == std::string_view::npos) return std::nullopt;
        text.remove_prefix(end + separator.size());
    }
    return text.substr(0, text.find(separator));
}

void storeRow(window::Catalog& catalog, int row, std::string_view text) {
    const auto at = static_cast<std::size_t>(row);
    const std::string_view line = GetLine(text, at, catalogFile);
    const std::string where = std::string(catalogFile) + ", Zeile " + std::to_string(row + 1);
    std::size_t field = 0;
    const auto next = [&] { return fieldOf(line, field++, where); };
    catalog.ReceiverName[at] = next();
    catalog.ReceiverPicture[at] = next();
    catalog.FirmwareFile[at] = next();
    catalog.FirmwareDate[at] = next();
    catalog.FirmwareNote[at] = next();
    for (int kind = 0; kind < settingsKinds; ++kind) {
        catalog.SettingsFile[window::tableIndex(row, kind)] = next();
        catalog.SettingsDate[window::tableIndex(row, kind)] = next();
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

std::string_view GetLine(std::string_view text, std::size_t index, std::string_view where) {
    const auto line = pieceOf(text, "\r\n", index);
    if (!line) refuse(where, "Zeile", index);
    return *line;
}

std::string fieldOf(std::string_view line, std::size_t index, std::string_view where) {
    const auto field = pieceOf(line, ";", index);
    if (!field) refuse(where, "Feld", index);
    return base::fromAnsi(*field);
}

void LoadCatalog(MainWindow& window, std::string_view text) {
    for (int row = 0; row < window::receiverCount; ++row) {
        storeRow(window.Receivers, row, text);
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
