#include "online/catalog.h"

#include "app/frmMain.h"
#include "base/runtime_error.h"
#include "base/text.h"
#include "platform/program_path.h"
#include "toolkit/picture.h"

namespace online {

namespace {

constexpr std::int16_t none = -1;

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

std::size_t tableIndex(std::size_t receiver, std::size_t kind) {
    return receiver + receiverCount * kind;
}

void storeRow(Catalog& catalog, std::size_t row, std::string_view line) {
    catalog.ReceiverName[row] = fieldOf(line, 0);
    catalog.ReceiverPicture[row] = fieldOf(line, 1);
    catalog.FirmwareFile[row] = fieldOf(line, 2);
    catalog.FirmwareDate[row] = fieldOf(line, 3);
    catalog.FirmwareNote[row] = fieldOf(line, 4);
    for (std::size_t kind = 0; kind < settingsKinds; ++kind) {
        catalog.SettingsFile[tableIndex(row, kind)] = fieldOf(line, 5 + 2 * kind);
        catalog.SettingsDate[tableIndex(row, kind)] = fieldOf(line, 6 + 2 * kind);
    }
}

void showReceiver(frmMain& window, std::int16_t receiver) {
    const Catalog& catalog = window.Receivers;
    const std::string& picture = element(catalog.ReceiverPicture, receiver);
    window.Image1.setPicture(toolkit::loadPicture(platform::programPath() + picture));
    window.lbl_firmstand.setCaption("Stand: " + element(catalog.FirmwareDate, receiver));
    window.lbl_Aenderung.setCaption(element(catalog.FirmwareNote, receiver));
}

void preselectSettings(frmMain& window, std::int16_t receiver) {
    for (std::int16_t kind = 0; kind < static_cast<std::int16_t>(settingsKinds); ++kind) {
        toolkit::OptionButton& option = window.Sett_Option[static_cast<std::size_t>(kind)];
        const bool available = !element(window.Receivers.SettingsFile, receiver, kind).empty();
        option.setEnabled(available);
        if (!available || window.SelectedSettings != none) continue;
        window.SelectedSettings = kind;
        option.setValue(true);
        window.lbl_settstand.setCaption("Stand: " + element(window.Receivers.SettingsDate, receiver, kind));
        window.lbl_reihenfolge.setCaption(window.ChannelOrder[static_cast<std::size_t>(kind)]);
    }
}

void offerReceiver(frmMain& window, std::size_t row) {
    toolkit::OptionButton& option = window.Firm_Option[row];
    option.setEnabled(true);
    if (window.SelectedFirmware != none) return;
    window.SelectedFirmware = static_cast<std::int16_t>(row);
    option.setValue(true);
    showReceiver(window, window.SelectedFirmware);
    preselectSettings(window, window.SelectedFirmware);
}

/// The channel order of the kind that is lost stays in view: this is intended.
void dropSettings(frmMain& window, std::size_t kind) {
    window.SelectedSettings = none;
    window.Sett_Option[kind].setValue(false);
    window.lbl_settstand.setCaption("Stand: Nicht verfügbar");
    window.lbl_reihenfolge.setCaption(window.ChannelOrder.at(kind));
}

} // namespace

const std::string& element(std::span<const std::string> texts, std::int16_t index) {
    if (index < 0 || static_cast<std::size_t>(index) >= texts.size()) outOfRange();
    return texts[static_cast<std::size_t>(index)];
}

const std::string& element(const Catalog::Table& table, std::int16_t receiver, std::int16_t kind) {
    if (receiver < 0 || static_cast<std::size_t>(receiver) >= receiverCount) outOfRange();
    if (kind < 0 || static_cast<std::size_t>(kind) >= settingsKinds) outOfRange();
    return table[tableIndex(static_cast<std::size_t>(receiver), static_cast<std::size_t>(kind))];
}

std::string_view GetLine(std::string_view text, std::size_t index) {
    return pieceOf(text, "\r\n", index, "Zeile der Serverdatei");
}

std::string fieldOf(std::string_view line, std::size_t index) {
    return base::fromAnsi(pieceOf(line, ";", index, "Feld der Serverdatei"));
}

void LoadCatalog(frmMain& window, std::string_view text) {
    for (std::size_t row = 0; row < receiverCount; ++row) {
        storeRow(window.Receivers, row, GetLine(text, row));
        if (!window.Receivers.FirmwareFile[row].empty()) offerReceiver(window, row);
    }
}

void Firm_Option_Click(frmMain& window, std::int16_t Index) {
    window.SelectedFirmware = Index;
    showReceiver(window, Index);
    for (std::size_t kind = 0; kind < settingsKinds; ++kind) {
        const bool available =
            !element(window.Receivers.SettingsFile, Index, static_cast<std::int16_t>(kind)).empty();
        window.Sett_Option[kind].setEnabled(available);
        if (!available && window.SelectedSettings == static_cast<std::int16_t>(kind))
            dropSettings(window, kind);
    }
}

void Sett_Option_Click(frmMain& window, std::int16_t Index) {
    window.SelectedSettings = Index;
    window.lbl_settstand.setCaption("Stand: " +
                                    element(window.Receivers.SettingsDate, window.SelectedFirmware, Index));
    window.lbl_reihenfolge.setCaption(element(window.ChannelOrder, Index));
}

} // namespace online
