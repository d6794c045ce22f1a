#include "online/update_check.h"

#include "base/lines.h"
#include "online/catalog.h"
#include "online/download.h"
#include "online/server_addresses.h"
#include "platform/shell.h"
#include "platform/shell_open.h"
#include "toolkit/dispatch.h"
#include "toolkit/message_box.h"
#include "window/main_window.h"
#include "window/reasons.h"
#include "window/title.h"

#include <optional>
#include <string>

namespace online {

namespace {

/// Parameters and folder are the text "0": this is intended.
[[noreturn]] void refuseOutdatedProgram() {
    const std::string text = base::joinLines({
        "Eine neue Version des Programmes ist verfügbar!",
        "",
        "Installieren Sie die akutelle Version des Programmes.",
        "Die Updateseite wird automatisch geöffnet.",
    });
    toolkit::messageBox(text, toolkit::Critical, "Version abgelaufen.");
    platform::ShellOpenFile("open", updatePageUrl(), "0", "0", platform::showNormal, false);
    toolkit::endAtOnce();
}

void reportNoConnection(window::MainWindow& window) {
    const std::string text = base::joinLines({
        "Es konnte keine Internet-Verbindung hergestellt werden!",
        "",
        "Die Internet Updatefunktion kann nicht verwendet werden!",
        "Prüfen Sie Ihren Internetanschluss und starten Sie das Programm später nochmal.",
    });
    toolkit::messageBox(text, toolkit::Critical, "Verbindungs-Fehler");
    window.showOnlineState("Keine Internetverbindung", "Überprüfen Sie Ihren Internetanschluss.");
    window.cmdChoose.setCaption("Keine Verbindung");
    window.refuseUpdate(window::noConnection);
}

void showNews(window::MainWindow& window, std::string_view text) {
    const std::string_view line = GetLine(text, 0, newsFile);
    const std::string where = std::string(newsFile) + ", Zeile 1";
    for (std::size_t i = 0; i < window.lbl_news.size(); ++i)
        window.lbl_news[i].setCaption(fieldOf(line, i, where));
}

} // namespace

void CheckForUpdates(window::MainWindow& window) {
    window.refuseUpdate(window::searchGoesOn);
    const std::string url = downloadUrl();
    const std::string version =
        OpenURL({window.StatusBar1.panel(2), window.prgUpdate}, url + "usb-version.txt", "0");
    if (version.empty()) return reportNoConnection(window);
    // A line end behind the number is a difference, too.
    if (version != window::programVersion) refuseOutdatedProgram();

    const auto news = OpenTextFile(window.prgUpdate, url + newsFile);
    if (!news) return reportNoConnection(window);
    showNews(window, *news);
    const auto catalog = OpenTextFile(window.prgUpdate, url + catalogFile);
    if (!catalog) return reportNoConnection(window);
    LoadCatalog(window, *catalog);

    window.showOnlineState("Updates geladen.", "Updates wurden geladen.");
    if (window.lblHDSize.caption().empty())
        window.refuseUpdate(window::noStick());
    else
        window.allowUpdate();
    window.cmdChoose.setCaption("Starte Update");
}

} // namespace online
