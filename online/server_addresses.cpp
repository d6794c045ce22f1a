#include "online/server_addresses.h"

#include "app/program_path.h"
#include "platform/profile.h"
#include "platform/text.h"

#include <string_view>

namespace online {

namespace {

constexpr std::size_t sectionBufferSize = 4096;

void store(ServerAddresses& addresses, std::string_view line) {
    const std::size_t sign = line.find('=');
    if (sign == std::string_view::npos || sign + 1 == line.size()) return;
    const std::string_view key = line.substr(0, sign);
    std::string value = platform::fromAnsi(line.substr(sign + 1));
    while (value.ends_with('/'))
        value.pop_back();
    if (key == "Update") addresses.Update = value;
    if (key == "UpdatePage") addresses.UpdatePage = value;
    if (key == "WebHost") addresses.WebHost = value;
}

} // namespace

ServerAddresses serverAddresses() {
    ServerAddresses addresses{"http://update.orvanta.example", "www.orvanta.example", "www.brellix.example"};
    std::string buffer(sectionBufferSize, '\0');
    buffer.resize(platform::profileSection("Server", buffer, app::programPath() + "Server.ini"));
    std::string_view rest = buffer;
    for (std::size_t end = rest.find('\0'); end != std::string_view::npos; end = rest.find('\0')) {
        store(addresses, rest.substr(0, end));
        rest.remove_prefix(end + 1);
    }
    return addresses;
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
