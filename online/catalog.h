// The receivers that the update server knows, and the choice among them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

class frmMain;

namespace online {

constexpr std::size_t receiverCount = 9;
constexpr std::size_t settingsKinds = 5; ///< Austria, Germany, Italy, France, Spain

/// The receiver catalog; UTF-8. An empty file name: there is no such file.
struct Catalog {
    using Texts = std::array<std::string, receiverCount>;
    using Table = std::array<std::string, receiverCount * settingsKinds>;

    Texts ReceiverName;
    Texts ReceiverPicture;
    Texts FirmwareFile;
    Texts FirmwareDate;
    Texts FirmwareNote;
    Table SettingsFile;
    Table SettingsDate;
};

/// An element of an array of texts. Throws base::RuntimeError (SubscriptOutOfRange) when there is none, so
/// for -1.
const std::string& element(std::span<const std::string> texts, std::int16_t index);

/// The same in a table of receivers by kinds of channel list, which is stored kind after kind.
const std::string& element(const Catalog::Table& table, std::int16_t receiver, std::int16_t kind);

/// Line of a text whose lines are separated by CR LF, counted from 0. Throws base::RuntimeError
/// (SubscriptOutOfRange) when there is none. The result is part of `text`.
std::string_view GetLine(std::string_view text, std::size_t index);

/// Field of a line whose fields are separated by ";", counted from 0; Windows-1252 in, UTF-8 out. Throws
/// base::RuntimeError (SubscriptOutOfRange) when there is none.
std::string fieldOf(std::string_view line, std::size_t index);

/// Parses usb-list.csv (Windows-1252) into the window's catalog, enables what can be had, and chooses the
/// first receiver and channel list there are. Throws base::RuntimeError for a catalog that lacks lines or
/// fields, or a picture that cannot be loaded.
void LoadCatalog(frmMain& window, std::string_view text);

/// The user, or LoadCatalog, chose a receiver.
void Firm_Option_Click(frmMain& window, std::int16_t Index);

/// The user, or LoadCatalog, chose a kind of channel list.
void Sett_Option_Click(frmMain& window, std::int16_t Index);

} // namespace online
