#include "app/command_line.h"

#include "app/program.h"

#include <string_view>

namespace app {

namespace {

std::string versionText() {
    return std::string(programTitle).append(programVersion) + "\n";
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
