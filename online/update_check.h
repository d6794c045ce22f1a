#pragma once

namespace window {
class MainWindow;
}

namespace online {

/// Asks the update server, once for each start of the program: is this program current, what is new, which
/// receivers are there. Ends the program at once when it is outdated. Throws base::RuntimeError for
/// malformed server files.
void CheckForUpdates(window::MainWindow& window);

} // namespace online
