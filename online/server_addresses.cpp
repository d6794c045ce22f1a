#include "online/server_addresses.h"

#include "app/program_path.h"
#include "platform/http_address.h"
#include "platform/profile.h"
#include "platform/text.h"

#include <optional>
#include <string_view>

namespace online {

namespace {

constexpr std::size_t sectionBufferSize = 4096;

/// Of several lines with one key the first counts, as everywhere in such a file.
void store(std::optional<std::string>& address, std::string_view key, std::string_view line) {
    const std::size_t sign = line.find('=');
    if (address || sign != key.size() || sign + 1 == line.size()) return;
    if (!platform::startsWithNoCase(line, key)) return;
    address = platform::fromAnsi(line.substr(sign + 1));
    while (address->ends_with('/'))
        address->pop_back();
}

} // namespace

ServerAddresses serverAddresses() {
    std::optional<std::string> update;
    std::optional<std::string> updatePage;
    std::optional<std::string> webHost;
    std::string buffer(sectionBufferSize, '\0');
    buffer.resize(platform::profileSection("Server", buffer, app::programPath() + "Server.ini"));
    std::string_view rest = buffer;
    for (std::size_t end = rest.find('\0'); end != std::string_view::npos; end = rest.find('\0')) {
        const std::string_view line = rest.substr(0, end);
        store(update, "Update", line);
        store(updatePage, "UpdatePage", line);
        store(webHost, "WebHost", line);
        rest.remove_prefix(end + 1);
    }
    return {update.value_or("http://update.orvanta.example"), updatePage.value_or("www.orvanta.example"),
            webHost.value_or("www.brellix.example")};
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
