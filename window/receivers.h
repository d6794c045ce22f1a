// The receivers that the update server knows, with their files. No line of the server is read here: see
// online/catalog.h.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>

namespace window {

constexpr int receiverCount = 9;
constexpr int settingsKinds = 5; ///< Austria, Germany, Italy, France, Spain

/// The receiver catalog; UTF-8. An empty file name: there is no such file.
struct Catalog {
    using Texts = std::array<std::string, std::size_t{receiverCount}>;
    using Table = std::array<std::string, std::size_t{receiverCount * settingsKinds}>;

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
const std::string& element(std::span<const std::string> texts, int index);

/// The same in a table of receivers by kinds of channel list, which is stored kind after kind.
const std::string& element(const Catalog::Table& table, int receiver, int kind);

/// Index of that element. Throws as element() does.
std::size_t tableIndex(int receiver, int kind);

} // namespace window
