#pragma once

#include <string>

namespace online {

/// Where the program finds its servers: "Server.ini" in the program folder, section `Server`; what the file
/// does not name is the built-in default.
struct ServerAddresses {
    std::string Update;     ///< scheme and host of the update server, as in "http://update.orvanta.example"
    std::string UpdatePage; ///< host of the page that offers the program itself
    std::string WebHost;    ///< the distributor's web host
};

ServerAddresses serverAddresses();

/// Address of the update server's download folder, ending in "/".
std::string downloadUrl();

/// Address of the page that offers the program itself.
std::string updatePageUrl();

/// Address of the distributor's sponsor page.
std::string sponsorPageUrl();

} // namespace online
