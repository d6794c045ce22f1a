#pragma once

#include "build_choices.h"

#include <string>

namespace online {

/// Where the program finds its servers: "Server.ini" in the program folder, section `Server`; what the file
/// does not name is the built-in default.
struct ServerAddresses {
    std::string Update{base::updateServer};   ///< scheme and host of the update server
    std::string UpdatePage{base::updatePage}; ///< host of the page that offers the program itself
    std::string WebHost{base::webHost};       ///< the distributor's web host
};

/// Reads the file, once, when the program starts; without a file all are the built-in ones. Throws
/// base::RuntimeError with the file's name when there is one that cannot be read: the built-in servers are
/// not those that its owner has chosen.
void loadServerAddresses();

/// As they were loaded.
const ServerAddresses& serverAddresses();

/// Address of the update server's download folder, ending in "/".
std::string downloadUrl();

/// Address of the page that offers the program itself.
std::string updatePageUrl();

/// Address of the distributor's sponsor page.
std::string sponsorPageUrl();

} // namespace online
