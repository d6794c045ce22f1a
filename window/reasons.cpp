#include "window/reasons.h"

#include "platform/volumes.h"

namespace window {

std::string noStick() {
    const std::string missing = platform::missingDriveService();
    return "Kein USB-Stick gefunden. Schließen Sie den USB-Stick am PC an." +
           (missing.empty() ? missing : "\n" + missing);
}

} // namespace window
