#include "app/handbook.h"

#include "base/lines.h"
#include "build_choices.h"
#include "platform/files.h"
#include "platform/program_path.h"
#include "platform/shell.h"
#include "platform/shell_open.h"
#include "platform/system_path.h"
#include "toolkit/message_box.h"

namespace app {

namespace {

constexpr std::string_view page = "Anleitung.html";

constexpr const char* missing = "Die Anleitung fehlt. Installieren Sie das Programm neu, oder entpacken Sie "
                                "sein Archiv noch einmal vollständig.";
constexpr const char* notOpened = "Die Anleitung lässt sich nicht öffnen. Öffnen Sie diese Datei selbst, zum "
                                  "Beispiel mit Ihrem Browser:";

bool isThere(const std::string& file) {
    return platform::fileAttributes(file).has_value();
}

} // namespace

std::string handbookFile(std::string_view otherFolder) {
    std::string file = platform::programPath().append(page);
    if (isThere(file)) return file;
    file = platform::withBackslash(std::string(otherFolder)).append(page);
    return !otherFolder.empty() && isThere(file) ? file : std::string();
}

void openHandbook(std::string_view title) {
    const std::string file = handbookFile(base::handbookFolder);
    if (file.empty())
        toolkit::messageBox(missing, toolkit::Exclamation, title);
    else if (!platform::ShellOpenFile("open", file, {}, {}, platform::showNormal, false))
        toolkit::messageBox(base::joinLines({notOpened, platform::systemPath(file)}), toolkit::Exclamation,
                            title);
}

} // namespace app
