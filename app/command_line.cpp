#include "app/command_line.h"

#include "window/title.h"

#include <string_view>

namespace app {

namespace {

std::string versionText() {
    return std::string(window::programTitle).append(window::programVersion) + "\n";
}

constexpr const char* helpText = "Aufruf: orvanta-usbtool [--help | --version]\n"
                                 "\n"
                                 "  --help     zeigt diese Hilfe\n"
                                 "  --version  nennt die Version\n"
                                 "\n"
                                 "Ohne eine dieser Angaben öffnet sich das Fenster.\n";

} // namespace

std::optional<std::string> answerTo(std::span<const char* const> arguments) {
    const std::string_view first = arguments.size() > 1 ? arguments[1] : "";
    if (first == "--version") return versionText();
    if (first == "--help") return versionText() + "\n" + helpText;
    return std::nullopt;
}

} // namespace app
