// Why the main button cannot be pressed, as its tool tip tells.
#pragma once

#include <string>
#include <string_view>

namespace window {

constexpr std::string_view searchGoesOn =
    "Es wird noch nach Updates gesucht. Danach kann das Update gestartet werden.";
constexpr std::string_view noConnection = "Der Update-Server ist nicht erreichbar. Prüfen Sie Ihren "
                                          "Internetanschluss, und starten Sie das Programm "
                                          "neu.";

/// Where the sticks cannot be seen at all, plugging one in helps nobody: then it says what does.
std::string noStick();

} // namespace window
