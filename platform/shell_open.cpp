#include "platform/shell_open.h"

#include "platform/shell.h"

#include <string>

namespace platform {

namespace {

constexpr ShellOwner desktopWindow = 0;
constexpr int highestErrorCode = 32;

} // namespace

bool ShellOpenFile(std::string_view verb, std::string_view file, std::string_view parameters,
                   std::string_view directory, int showCommand, bool bOpenAsFallback) {
    const int code = shellExecute(desktopWindow, verb, file, parameters, directory, showCommand);
    if (code == ShellNoAssociation && bOpenAsFallback)
        startOpenWithChooser("rundll32.exe shell32.dll,OpenAs_RunDLL " + std::string(file));
    return code > highestErrorCode;
}

} // namespace platform
