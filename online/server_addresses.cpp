#include "online/server_addresses.h"

#include "base/letters.h"
#include "base/runtime_error.h"
#include "base/text.h"
#include "platform/file_check.h"
#include "platform/http_address.h"
#include "platform/profile.h"
#include "platform/program_path.h"

#include <optional>
#include <string_view>

namespace online {

namespace {

/// Of several lines with one key the first counts, as everywhere in such a file.
void store(std::optional<std::string>& address, std::string_view key, std::string_view line) {
    const std::size_t sign = line.find('=');
    if (address || sign != key.size() || sign + 1 == line.size()) return;
    if (!base::startsWithNoCase(line, key)) return;
    address = base::fromAnsi(line.substr(sign + 1));
    while (address->ends_with('/'))
        address->pop_back();
}

ServerAddresses addressesOf(std::string_view lines) {
    std::optional<std::string> update;
    std::optional<std::string> updatePage;
    std::optional<std::string> webHost;
    for (std::size_t end = lines.find('\0'); end != std::string_view::npos; end = lines.find('\0')) {
        const std::string_view line = lines.substr(0, end);
        store(update, "Update", line);
        store(updatePage, "UpdatePage", line);
        store(webHost, "WebHost", line);
        lines.remove_prefix(end + 1);
    }
    const ServerAddresses builtIn;
    return {update.value_or(builtIn.Update), updatePage.value_or(builtIn.UpdatePage),
            webHost.value_or(builtIn.WebHost)};
}

ServerAddresses& loaded() {
    static ServerAddresses addresses;
    return addresses;
}

} // namespace

void loadServerAddresses() {
    using platform::FileResult;
    const std::string file = platform::programPath() + "Server.ini";
    std::string lines;
    const FileResult result = platform::readProfileSection("Server", lines, file);
    if (result != FileResult::FileNotFound)
        platform::check(result, file, base::advice(base::ErrorNumber::FileNotFound));
    loaded() = addressesOf(lines);
}

const ServerAddresses& serverAddresses() {
    return loaded();
}

std::string downloadUrl() {
    return serverAddresses().Update + "/orvanta/download/";
}

std::string updatePageUrl() {
    return "http://" + serverAddresses().UpdatePage;
}

std::string sponsorPageUrl() {
    return "http://" + serverAddresses().WebHost + "/index_link.php?ref=usbtool";
}

} // namespace online
