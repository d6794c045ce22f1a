#include "app/program.h"

#include "drive/cDrive.h"
#include "platform/cRegistry.h"
#include "platform/cTray.h"

namespace app {

std::string joinLines(std::initializer_list<std::string_view> lines) {
    std::string text;
    for (const std::string_view* line = lines.begin(); line != lines.end(); ++line) {
        if (line != lines.begin()) text += CRLF;
        text += *line;
    }
    return text;
}

Program::Program() = default;
Program::~Program() = default;

} // namespace app
